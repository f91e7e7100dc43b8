#include "fuzz/dg_probe.h"
#include "fuzz/fuzz_target.h"

namespace {

// What the field says where there is no card at all.
QString withoutData(const DgProbe::Text &text)
{
    DGParser empty;
    return text.read(empty);
}

} // namespace

// A file of the card, as each of the five data groups, and nothing of it once it is taken away.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    Fuzz::silence();
    const QString complaint = DgProbe::complaint(reinterpret_cast<const char *>(data), size);
    Fuzz::require(complaint.isEmpty(), complaint);

    DGParser parser;
    for (const char *group : { "DG1", "DG2", "DG11", "DG12", "DG13" })
        parser.loadDg(group, QByteArray(reinterpret_cast<const char *>(data), static_cast<int>(size)));
    for (const DgProbe::Text &text : DgProbe::texts)
        text.read(parser);
    parser.clearDg();
    Fuzz::require(parser.photo().isEmpty(), "the picture stays");
    for (const DgProbe::Text &text : DgProbe::texts)
        Fuzz::require(text.read(parser) == withoutData(text), QString(text.name) + " stays");
    return 0;
}
