#pragma once

#include <QMap>
#include <QObject>
#include <QString>
#include <QStringList>

// The system report as plain text: what a help desk has to know of a computer, and nothing of a card. Built for one
// call and thrown away.
class SysInfo : public QObject {
    Q_OBJECT

public:
    // Fills the markers of `pattern`: {version} {system} {logs} {browsers} {config} {readers}. Others stay. An empty
    // `directory` stands for the folder of the running program.
    QString info(const QString &directory, const QString &pattern) const;

    // The word for a list without entries.
    static QString none();

    // The lists under their headings, or the word for none.
    static QString browserLines(const QMap<QString, QString> &versions);
    static QString softwareLines(const QStringList &cardSoftware, const QString &signature64,
                                 const QString &signature32);
    static QString listOrNone(const QStringList &lines);
    static QString configLines(const QString &readersConf);

    // Both forms of the line on logging, and the heading above the content of readers.conf: whoever makes rich text of
    // the report puts links behind them.
    static QString logsActive();
    static QString logsInactive();
    static QString configHeading();
};
