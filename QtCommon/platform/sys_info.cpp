#include "platform/sys_info.h"

#include "app/version.h"
#include "base/common.h"
#include "platform/os.h"

#include <QFileInfo>

namespace {

struct Report {
    Os os;
    QString directory;
};

QString versionSection(Report &)
{
    return SysInfo::tr("Wersja aplikacji: ") + Version::fullText + "\n";
}

QString systemSection(Report &report)
{
    const QString folder =
        report.directory.isEmpty() ? QFileInfo(report.os.programPathLatin1()).path() : report.directory;
    return SysInfo::tr("Katalog: ") + folder + "\n" + SysInfo::tr("System: ") + report.os.systemDescription() + "\n";
}

QString logsSection(Report &report)
{
    const QString folder = report.os.logsDir();
    const QString state = QFileInfo(folder).isDir() ? SysInfo::logsActive() : SysInfo::logsInactive();
    return (SysInfo::tr("Katalog z logami: ") + folder + "\n" + state).trimmed();
}

QString configSection(Report &)
{
    return "\n\n" + SysInfo::configHeading() + "\n" + SysInfo::configLines(Common::readReadersConf());
}

QString browsersSection(Report &report)
{
    return "\n\n" + SysInfo::tr("Przeglądarki: ") + "\n" + SysInfo::browserLines(report.os.browserVersions());
}

QString readersSection(Report &report)
{
    return "\n\n" + SysInfo::tr("Programy/sterowniki do obsługi kart: ") + "\n"
        + SysInfo::softwareLines(report.os.cardSoftware(), report.os.signatureAppVersion(64),
                                 report.os.signatureAppVersion(32))
        + "\n\n" + SysInfo::tr("Czytniki w systemie: ") + "\n" + SysInfo::listOrNone(report.os.readerDevices());
}

// In the order of replacement, which is not that of the page.
const struct {
    const char *marker;
    QString (*section)(Report &);
} sections[] = {
    { "{version}", versionSection }, //
    { "{system}", systemSection }, //
    { "{logs}", logsSection }, //
    { "{browsers}", browsersSection }, //
    { "{config}", configSection }, //
    { "{readers}", readersSection },
};

} // namespace

QString SysInfo::info(const QString &directory, const QString &pattern) const
{
    Report report { {}, directory };
    QString text = pattern;
    for (const auto &row : sections) {
        if (text.contains(row.marker))
            text.replace(row.marker, row.section(report));
    }
    return text.trimmed();
}

QString SysInfo::none()
{
    return tr("BRAK");
}

QString SysInfo::browserLines(const QMap<QString, QString> &versions)
{
    QStringList lines;
    for (auto entry = versions.cbegin(); entry != versions.cend(); ++entry)
        lines << entry.key() + ": " + entry.value();
    return listOrNone(lines);
}

QString SysInfo::softwareLines(const QStringList &cardSoftware, const QString &signature64, const QString &signature32)
{
    QStringList lines = cardSoftware;
    if (!signature64.isEmpty())
        lines << tr("Velmor podpis elektroniczny Ver: ") + signature64;
    if (!signature32.isEmpty())
        lines << tr("Velmor podpis elektroniczny (32-bit) Ver: ") + signature32;
    lines.sort(Qt::CaseSensitive);
    return listOrNone(lines);
}

QString SysInfo::listOrNone(const QStringList &lines)
{
    const QString text = lines.join('\n').trimmed();
    return text.isEmpty() ? none() : text;
}

QString SysInfo::configLines(const QString &readersConf)
{
    const QString text = readersConf.trimmed();
    return text.isEmpty() ? none() : text;
}

QString SysInfo::logsActive()
{
    return tr("Zbieranie logów: ") + tr("aktywne");
}

QString SysInfo::logsInactive()
{
    return tr("Zbieranie logów: ") + tr("nieaktywne");
}

QString SysInfo::configHeading()
{
    return tr("Zawartość pliku konfiguracyjnego: ");
}
