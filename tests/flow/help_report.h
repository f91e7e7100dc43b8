#pragma once

#include "support/flow.h"

#include "base/ipc_msg.h"
#include "platform/os.h"

#include <QTextBlock>
#include <QTextBrowser>

// The help page of a window that each test opens anew, and the report on it.
class HelpReport {
public:
    void begin() { flow = std::make_unique<Flow>(); }
    void end()
    {
        flow.reset();
        QDir(Os().logsDir()).removeRecursively();
    }

    std::unique_ptr<Flow> flow;

    QTextBrowser *report() const { return flow->find<QTextBrowser>("tDiagnosticsRaport"); }
    QString text() const { return report()->toPlainText().replace(QChar::Nbsp, ' '); }
    QStringList lines() const { return text().split('\n'); }

    void showHelp()
    {
        if (!flow->window)
            flow->openWindow();
        flow->window->moveToHelpPage();
    }
    void click(const char *link) { emit report()->anchorClicked(QUrl(link)); }

    // As the Monitor sends it.
    void answer(const QString &text) const
    {
        flow->window->recvIpcMsg(IpcMsg { { "to", "velmor_manager" }, { "diagnoseReaders", text.toUtf8() } });
    }

    // Words of the report that lead somewhere, with their addresses.
    QStringList links() const
    {
        QStringList found;
        for (QTextBlock block = report()->document()->begin(); block.isValid(); block = block.next()) {
            for (auto part = block.begin(); !part.atEnd(); ++part) {
                const QTextCharFormat format = part.fragment().charFormat();
                if (!format.anchorHref().isEmpty())
                    found << part.fragment().text() + " " + format.anchorHref();
            }
        }
        return found;
    }
};
