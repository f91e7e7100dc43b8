#pragma once

#include <QCoreApplication>
#include <QSize>
#include <QString>
#include <QVector>

// The system report as rich text: with its section on screens, and with links behind what the user can act on. Text of
// other programs is escaped, so that none of it becomes a link. Built for one call and thrown away.
class SysInfoGui {
    Q_DECLARE_TR_FUNCTIONS(SysInfoGui)

public:
    // Actions of the links, as their whole addresses.
    static constexpr char openFolder[] = "open_folder";
    static constexpr char createFolder[] = "create_folder";
    static constexpr char clearConfig[] = "clear_config";

    struct Screen {
        QSize size;
        qreal dotsPerInch;
        qreal pixelRatio;
    };

    // The markers are those of SysInfo and {screens}.
    QString info(const QString &directory, const QString &pattern) const;

    // The section of the screens, with rich-text breaks between its entries.
    static QString screensSection(const QVector<Screen> &screens);

    // The plain report made rich.
    static QString richText(const QString &report, const QString &screens, const QString &logsDir);

    // What a view's HTML becomes when the log folder has been made while the report is shown. Rebuilding it would lose
    // the diagnosis of the readers; and the note is needed since logs are written from the next start on.
    static QString withLogsActive(QString html, const QString &logsDir);

    // Plain text for a place of rich text, its lines kept.
    static QString escaped(const QString &text);
};
