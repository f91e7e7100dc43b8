#pragma once

#include <QMap>
#include <QString>

// The system's management interface (WMI), for one query at a time. Its two objects live in process-wide storage
// between connect and disconnect; on the window thread only.
class WmiClient {
public:
    // 0, or the code of the step that failed. Whatever it answers, disconnect comes after it.
    long connect();

    // The properties of the first object that answers a query in WQL, as texts: numbers and truth values in decimal,
    // "null" for none, "not set" for what is no text and no number. Empty without a connection.
    QMap<QString, QString> query(const QString &text);

    void disconnect();
};
