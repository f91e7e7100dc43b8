#include "base/common.h"
#include "base/platform.h"
#include "fuzz/fuzz_home.h"
#include "fuzz/fuzz_target.h"
#include "gui/sys_info_gui.h"
#include "platform/card_software.h"
#include "platform/sys_info.h"

#ifdef Q_OS_LINUX
#include "platform/package_database_lin.h"
#endif

#include <QFileInfo>
#include <QTextBlock>
#include <QTextDocument>

// What the help page makes of texts that others chose: the report is rich text, and none of it may be markup but the
// program's own. An input is the file readers.conf, the list of packages, devices by lines, a folder, and what the
// Monitor says of the readers.
namespace {

using Fuzz::require;

const QStringList actions { SysInfoGui::openFolder, SysInfoGui::createFolder, SysInfoGui::clearConfig };
const QString logsDir("/state & <b>/velmor");
const QString screens("\n\nMonitory:\n1) 1x1 skala=1, gęstość pikseli=1");

// The text that the rich one shows. Anything but breaks and the three links is a failure.
QString shownText(QString rich)
{
    for (const QString &action : actions) {
        for (const char *word : { "Otwórz", "Aktywuj", "Wyczyść" })
            rich.remove(QString("&nbsp;&nbsp;<a href='%1'>[%2]</a>").arg(action, word));
    }
    rich.replace("<br>", "\n");
    require(!rich.contains('<') && !rich.contains('>') && !rich.contains('"'), "markup that is not the program's");
    int at = rich.indexOf('&');
    for (; at >= 0; at = rich.indexOf('&', at + 1)) {
        const QStringRef rest = rich.midRef(at);
        require(rest.startsWith("&lt;") || rest.startsWith("&gt;") || rest.startsWith("&amp;")
                    || rest.startsWith("&quot;"),
                "an entity that is not the program's");
    }
    return rich.replace("&lt;", "<").replace("&gt;", ">").replace("&quot;", "\"").replace("&amp;", "&");
}

// As the page has it: the view's own reading of the text.
void checkDocument(const QString &rich)
{
    QTextDocument document;
    document.setHtml(rich);
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        require(!block.textList() && block.blockFormat().headingLevel() == 0, "a list or a heading");
        for (auto part = block.begin(); !part.atEnd(); ++part) {
            const QTextCharFormat format = part.fragment().charFormat();
            require(!format.isImageFormat() && !format.isTableFormat(), "a picture or a table");
            require(!format.isAnchor() || format.anchorHref().isEmpty() || actions.contains(format.anchorHref()),
                    "a link that is not the program's");
        }
    }
}

QMap<QString, QString> browsers(const QByteArray &lines)
{
    QMap<QString, QString> versions;
    for (const QByteArray &line : lines.split('\n'))
        versions[QString::fromUtf8(line.left(line.indexOf('=')))] = QString::fromUtf8(line);
    return versions;
}

// The packages as the system tells them, or as a list of programs on a system that has no packages.
QStringList software(const QByteArray &output)
{
    const auto lookup = [&output](const QString &word, int bits) -> CardSoftware::Program {
        const QString text = QString::fromUtf8(output);
        if (!text.contains(word, Qt::CaseInsensitive))
            return {};
        return { { "name", text.left(80) }, { "version", word }, { "appBits", bits == 32 ? text.right(2) : "" } };
    };
    QStringList lines = CardSoftware::lines(lookup);
#ifdef Q_OS_LINUX
    const PackageDatabase::Packages packages = PackageDatabase::parse(output);
    for (const PackageDatabase::Package &package : packages)
        require(package.bits == 32 || package.bits == 64, "a width that there is not");
    const QStringList found = PackageDatabase::cardSoftware(packages);
    require(found.size() <= packages.size(), "more programs than packages");
    lines += found;
    lines << PackageDatabase::versionOf(packages, "Podpis elektroniczny", 64);
#endif
    return lines;
}

void checkRich(const QString &report)
{
    const QString rich = SysInfoGui::richText(report, screens, logsDir);
    const QString expected = QString(report.toHtmlEscaped()).replace("{screens}", screens);
    QString plain = expected;
    plain.replace("&lt;", "<").replace("&gt;", ">").replace("&quot;", "\"").replace("&amp;", "&");
    require(shownText(rich) == plain, "the rich report shows another text");
    require(rich.contains("'create_folder'") == plain.contains("Zbieranie logów: nieaktywne"),
            "logs that are written are offered to be switched on, or the other way round");
    checkDocument(rich);
    checkDocument(SysInfoGui::withLogsActive(rich, logsDir));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const QString conf = [] {
        Fuzz::home();
        static int argc = 1;
        static char name[] = "fuzz_report";
        static char *argv[] = { name, nullptr };
        // Fonts and screens; it is never taken down.
        new QGuiApplication(argc, argv);
        const QString file = Platform::readersConfPath(Common::productName());
        QDir().mkpath(QFileInfo(file).path());
        // No program answers for the packages of this machine.
        qputenv("PATH", "");
        return file;
    }();
    Fuzz::silence();
    enum Part { Conf, Packages, Devices, Folder, Diagnosis, Parts };
    const QList<QByteArray> parts = Fuzz::parts(data, size, Parts);
    const QString folder = QString::fromUtf8(parts[Folder]);
    const QString diagnosis = QString::fromUtf8(parts[Diagnosis]);

    // The sections by themselves, with what a test cannot make the system say.
    const QString report = "Katalog: " + folder + "\n" + logsDir + "\n"
        + (size % 2 ? SysInfo::logsActive() : SysInfo::logsInactive()) + "\n\n" + SysInfo::configHeading() + "\n"
        + SysInfo::configLines(QString::fromUtf8(parts[Conf])) + "{screens}\n\n"
        + SysInfo::browserLines(browsers(parts[Packages])) + "\n\n"
        + SysInfo::softwareLines(software(parts[Packages]), folder, diagnosis) + "\n\n"
        + SysInfo::listOrNone(QString::fromUtf8(parts[Devices]).split('\n'));
    checkRich(report);

    // And the whole, as the page asks for it.
    writeFileBytes(conf, parts[Conf]);
    const QString whole = SysInfoGui().info(folder, "{version}{system}{logs}{config}{screens}{browsers}{readers}");
    shownText(whole);
    checkDocument(whole);

    const QString appended = SysInfoGui::escaped(diagnosis);
    require(shownText(appended) == diagnosis, "the diagnosis shows another text");
    checkDocument("<br>" + appended);
    require(SysInfoGui::screensSection({}).startsWith("\n\nMonitory"), "the screens have no heading");
    return 0;
}
