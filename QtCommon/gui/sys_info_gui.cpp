#include "gui/sys_info_gui.h"

#include "platform/os.h"
#include "platform/sys_info.h"

#include <QGuiApplication>
#include <QScreen>

namespace {

constexpr qreal designDotsPerInch = 96.0;
constexpr char lineBreak[] = "<br>";

QString threeDigits(qreal value)
{
    return QString::number(value, 'g', 3);
}

QString actionLink(const char *action, const QString &word)
{
    return QString("&nbsp;&nbsp;<a href='%1'>[").arg(action) + word + "]</a>";
}

QVector<SysInfoGui::Screen> screensOfTheSystem()
{
    QVector<SysInfoGui::Screen> screens;
    for (const QScreen *screen : QGuiApplication::screens())
        screens << SysInfoGui::Screen { screen->size(), screen->logicalDotsPerInch(), screen->devicePixelRatio() };
    return screens;
}

} // namespace

QString SysInfoGui::info(const QString &directory, const QString &pattern) const
{
    return richText(SysInfo().info(directory, pattern), screensSection(screensOfTheSystem()), Os().logsDir());
}

QString SysInfoGui::screensSection(const QVector<Screen> &screens)
{
    const QString entry = "%1) %2x%3 " + tr("skala") + "=%4, " + tr("gęstość pikseli") + "=%5";
    QStringList entries;
    for (const Screen &screen : screens)
        entries << entry.arg(QString::number(entries.size() + 1), QString::number(screen.size.width()),
                             QString::number(screen.size.height()), threeDigits(screen.dotsPerInch / designDotsPerInch),
                             threeDigits(screen.pixelRatio));
    return "\n\n" + tr("Monitory") + ":\n" + entries.join(lineBreak);
}

QString SysInfoGui::richText(const QString &report, const QString &screens, const QString &logsDir)
{
    // Escaped before anything rich is put in.
    QString text = report.toHtmlEscaped();
    text.replace("{screens}", screens);
    text.replace('\n', lineBreak);
    if (text.contains(SysInfo::logsInactive())) {
        text.replace(SysInfo::logsInactive(), SysInfo::logsInactive() + actionLink(createFolder, tr("Aktywuj")));
    } else if (text.contains(SysInfo::logsActive())) {
        const QString folder = logsDir.toHtmlEscaped();
        text.replace(folder, folder + actionLink(openFolder, tr("Otwórz")));
    }
    const QString heading = SysInfo::configHeading();
    if (text.contains(heading) && !text.contains(heading + lineBreak + SysInfo::none() + lineBreak))
        text.replace(heading, heading + actionLink(clearConfig, tr("Wyczyść")));
    return text.replace("Architektura", tr("Architektura"));
}

QString SysInfoGui::withLogsActive(QString html, const QString &logsDir)
{
    html.replace("Zbieranie logów: nieaktywne",
                 "Zbieranie logów: aktywne <a style='color:red;'>(Uruchom ponownie aplikację)</a>");
    html.remove("[Aktywuj]");
    const QString shown = logsDir.toHtmlEscaped();
    return html.replace(shown, shown + " <a href='open_folder'>[Otwórz]</a>");
}

QString SysInfoGui::escaped(const QString &text)
{
    return text.toHtmlEscaped().replace('\n', lineBreak);
}
