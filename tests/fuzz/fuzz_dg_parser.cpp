#include "fuzz/dg_probe.h"
#include "fuzz/fuzz_target.h"
#include "support/dg_builder.h"

#include <QtGlobal>

#include <cstdio>
#include <cstdlib>

namespace {

void discard(QtMsgType, const QMessageLogContext &, const QString &) { }

} // namespace

std::vector<QByteArray> fuzzSeeds()
{
    using namespace DgBuilder;

    Dg2 smallPicture;
    smallPicture.picture = jpeg(40);
    Dg13 longNames;
    longNames.surname = QByteArray(100, 'A');
    Dg13 oddTagList;
    oddTagList.tagList = QByteArray::fromHex("5F605F615F");
    Dg13 noSecondName;
    noSecondName.secondName.clear();
    return { Dg1().file(),  Dg2().file(),     smallPicture.file(), Dg11().file(),      Dg12().file(),
             Dg13().file(), longNames.file(), oddTagList.file(),   noSecondName.file() };
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const QtMessageHandler before = qInstallMessageHandler(discard);
    Q_UNUSED(before)

    const QString complaint = DgProbe::complaint(reinterpret_cast<const char *>(data), size);
    if (!complaint.isEmpty()) {
        std::fprintf(stderr, "%s\n", qPrintable(complaint));
        std::abort();
    }
    return 0;
}
