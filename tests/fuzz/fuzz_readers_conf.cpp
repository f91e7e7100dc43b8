#include "base/common.h"
#include "base/platform.h"
#include "fuzz/fuzz_home.h"
#include "fuzz/fuzz_target.h"
#include "platform/sys_info.h"

#include <QFile>
#include <QFileInfo>

// The table of readers, whatever stands in it: what it says of a reader, what the report tells of it, and that it can
// be emptied. An input is the name of a reader, and the file.
namespace {

using Fuzz::require;

// Byte for byte: the file's own marks are ASCII, and no byte of a Polish letter is.
QString sizeReadPlainly(const QString &content, const QString &reader)
{
    int start = 0;
    while (start <= content.size()) {
        int end = content.indexOf("\r\n", start);
        if (end < 0)
            end = content.size();
        int sign = end - 1;
        while (sign >= start && content[sign] != '=')
            --sign;
        if (sign > start && reader.contains(content.mid(start, sign - start)))
            return content.mid(sign + 1, end - sign - 1);
        start = end + 2;
    }
    return "200";
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const QString path = [] {
        Fuzz::home();
        const QString file = Platform::readersConfPath(Common::productName());
        QDir().mkpath(QFileInfo(file).path());
        return file;
    }();
    Fuzz::silence();
    const QList<QByteArray> parts = Fuzz::parts(data, size, 2);
    const QString reader = QString::fromUtf8(parts[0]);

    // An empty input stands for a file that is not there.
    QFile::remove(path);
    if (size > 0)
        require(writeFileBytes(path, parts[1]), "the file cannot be written");
    const QString content = QString::fromUtf8(parts[1].constData(), parts[1].size());
    require(Common::readReadersConf() == content, "the content is not what stands there");

    const QString found = Common::maxApduSize(reader);
    require(found == sizeReadPlainly(content, reader), "another size than read plainly");
    require(found == "200" || content.contains('=' + found), "a size that stands nowhere");

    const QString lines = SysInfo::configLines(content);
    require(!lines.isEmpty() && lines == lines.trimmed(), "the report has blanks for a file");
    require(content.contains(lines) || (lines == SysInfo::none() && content.trimmed().isEmpty()),
            "the report tells of another file");

    require(Common::clearReadersConf() && Common::readReadersConf().isEmpty(), "the file is not emptied");
    require(QFile::exists(path) == (size > 0), "emptying makes or removes the file");
    require(Common::maxApduSize(reader) == "200", "an emptied file says something");
    return 0;
}
