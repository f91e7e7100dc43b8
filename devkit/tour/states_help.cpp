#include "states.h"

#include "app/version.h"
#include "base/ipc_msg.h"
#include "gui/sys_info_gui.h"
#include "platform/os.h"

#include <QDir>
#include <QFile>
#include <QTextBrowser>

namespace {

bool help(Tour &tour)
{
    tour.window->moveToHelpPage();
    return tour.waitForPage("pageHelp");
}

void clickLink(Tour &tour, const char *address)
{
    emit tour.find<QTextBrowser>("tDiagnosticsRaport")->anchorClicked(QUrl(address));
}

// Folder and file go again, so that the states after it find the home empty. The report shown stays.
bool withLogsFolder(Tour &tour, bool (*enter)(Tour &tour))
{
    const bool entered = enter(tour);
    QDir(Os().logsDir()).removeRecursively();
    return entered;
}

bool helpWithLogs(Tour &tour)
{
    QDir().mkpath(Os().logsDir());
    return withLogsFolder(tour, help);
}

bool helpActivated(Tour &tour)
{
    return withLogsFolder(tour, [](Tour &inner) {
        const bool entered = help(inner);
        clickLink(inner, "create_folder");
        return entered;
    });
}

bool helpWithConfig(Tour &tour)
{
    Tour::writeReadersConf("OMNIA Smart 3121=E65535\r\nKlawiatura <PIN>=200\r\n");
    const bool entered = help(tour);
    QFile::remove(Tour::readersConfPath());
    return entered;
}

bool helpCopied(Tour &tour)
{
    return help(tour) && tour.click("bCopyRaport");
}

// As the Monitor answers it.
bool helpAnswered(Tour &tour)
{
    const bool entered = help(tour);
    tour.window->recvIpcMsg(IpcMsg { { "to", "velmor_manager" },
                                     { "diagnoseReaders", "Liczba czytników: 1\n- OMNIA Smart 3121: karta gotowa" } });
    return entered && tour.find("bDiagnosticStart")->isEnabled();
}

bool helpScrolled(Tour &tour)
{
    const bool entered = helpAnswered(tour);
    tour.find<QTextBrowser>("tDiagnosticsRaport")->moveCursor(QTextCursor::End);
    return entered;
}

// For the manual, the report of an invented computer: the same wherever the picture is taken.
constexpr char specimenReport[] = "Wersja aplikacji: %1\n"
                                  "Katalog: C:/Program Files/velmor\n"
                                  "System: Windows 11 Pro 22631\n"
                                  "Architektura: x86_64, x86_64-little_endian-llp64\n"
                                  "Katalog z logami: C:\\tmp\\velmor\n"
                                  "Zbieranie logów: nieaktywne\n\n"
                                  "Zawartość pliku konfiguracyjnego: \n"
                                  "OMNIA Smart 3121=E65535"
                                  "{screens}\n\n"
                                  "Przeglądarki: \n"
                                  "Firefox: 140.5.0\n"
                                  "Microsoft Edge: 142.0\n\n"
                                  "Programy/sterowniki do obsługi kart: \n"
                                  "BRAK\n\n"
                                  "Czytniki w systemie: \n"
                                  "OMNIA Smart 3121";

bool helpOfTheManual(Tour &tour)
{
    const bool entered = helpAnswered(tour);
    const QString report = QString(specimenReport).replace("%1", Version::fullText);
    const QString screens = SysInfoGui::screensSection({ { QSize(1920, 1080), 96, 1 } });
    tour.find<QTextBrowser>("tDiagnosticsRaport")->setText(SysInfoGui::richText(report, screens, "C:\\tmp\\velmor"));
    return entered;
}

} // namespace

QVector<State> helpStates()
{
    return {
        { "help", "anna", help },
        { "help-no-reader", "", help },
        { "help-logs", "anna", helpWithLogs },
        { "help-activated", "anna", helpActivated },
        { "help-config", "anna", helpWithConfig },
        { "help-copied", "anna", helpCopied },
        { "help-answered", "anna", helpAnswered },
        { "help-end", "anna", helpScrolled },
        { "manual-help", "anna", helpOfTheManual },
    };
}
