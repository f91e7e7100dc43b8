#include "window.h"

// The help page: the way to the help website, the system report with its three action links, the documents. The report
// is built anew at every visit and stands at once; what the Monitor knows of the readers is appended when it answers.
// Until then, and for good without a Monitor, the report cannot be asked for again. Failures are logged and not shown.

#include "app/app.h"
#include "base/common.h"
#include "gui/spoken_focus.h"
#include "gui/sys_info_gui.h"
#include "ipc/ipc.h"
#include "platform/open_outside.h"
#include "platform/os.h"
#include "ui_window.h"
#include "web_addresses.h"

#include <QDebug>
#include <QDir>
#include <QUrl>

namespace {

// Characters of one visit. A sibling may send what nobody has asked for, and without end.
constexpr int longestDiagnosis = 64 * 1024;
constexpr char furtherDiagnosis[] = "Dalsza diagnostyka czytników została pominięta.";

constexpr char reportPattern[] = "{version}{system}{logs}{config}{screens}{browsers}{readers}";

} // namespace

void Window::moveToHelpPage()
{
    if (heldMessages)
        return;
    leaveFocus(this);
    ui->bHelp->setEnabled(false);
    ui->frameReaders->hide();
    forgetPinEntries();
    qDebug().noquote() << "show help";
    enterPage(ui->pageHelp, "Pomoc");
    ui->bWroc->setVisible(isReader());
    ui->lPukBlocked_4->setFocus();
    getSystemInfo();
}

void Window::getSystemInfo()
{
    ui->bDiagnosticStart->setEnabled(false);
    diagnosisLength = 0;
    const QString report = SysInfoGui().info(app->rootDir(), reportPattern);
    // Links act here and nowhere else; of the two switches the first decides.
    ui->tDiagnosticsRaport->setOpenLinks(false);
    ui->tDiagnosticsRaport->setOpenExternalLinks(true);
    ui->tDiagnosticsRaport->setText(report);
    // What the Monitor knows of the readers comes as a message and is appended then.
    ipc->msgToMonitor(IpcMsg { { "diagnoseReaders", 1 } });
}

void Window::ipcDiagnoseReaders(const IpcMsg &m)
{
    // Also if the user has left the page meanwhile.
    const QString diagnosis = QString::fromUtf8(m.param("diagnoseReaders"));
    if (diagnosisLength <= longestDiagnosis) {
        diagnosisLength += diagnosis.size() + 1;
        const bool fits = diagnosisLength <= longestDiagnosis;
        ui->tDiagnosticsRaport->append("<br>" + (fits ? SysInfoGui::escaped(diagnosis) : QString(furtherDiagnosis)));
    }
    ui->bDiagnosticStart->setEnabled(true);
    ui->bHelp->setEnabled(true);
}

void Window::copyRaport()
{
    ui->tDiagnosticsRaport->selectAll();
    ui->tDiagnosticsRaport->copy();
}

void Window::openHelpWebsite()
{
    openOutside(QUrl(WebAddresses::help));
}

void Window::onDiagnosticsRaportAnchorClicked(const QUrl &link)
{
    const QString address = link.toString();
    const QString folder = Os().logsDir();
    if (address == SysInfoGui::openFolder) {
        qDebug().noquote() << "Opening logs folder";
        if (!openOutside(QUrl::fromLocalFile(folder)))
            qDebug().noquote() << "Opening logs folder failed";
    } else if (address == SysInfoGui::createFolder) {
        qDebug().noquote() << "Creating logs directory";
        if (QDir().mkpath(folder))
            ui->tDiagnosticsRaport->setText(SysInfoGui::withLogsActive(ui->tDiagnosticsRaport->toHtml(), folder));
    } else if (address == SysInfoGui::clearConfig) {
        qDebug().noquote() << "Clearing config file";
        if (Common::clearReadersConf())
            getSystemInfo();
        else
            qDebug().noquote() << "Clearing config file - failed!";
    }
}
