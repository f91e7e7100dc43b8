#pragma once

#include <QByteArray>
#include <QMap>

// The text form of a message read in the plain way, each closing tag searched from its opening one on: slow on hostile
// texts, but with nothing in it that could be wrong. What the program's own reading must agree with.
inline QMap<QByteArray, QByteArray> entriesReadPlainly(const QByteArray &text)
{
    QMap<QByteArray, QByteArray> entries;
    int position = 0;
    while (position < text.size()) {
        const int open = text.indexOf('<', position);
        const int end = open < 0 ? -1 : text.indexOf('>', open);
        if (end < 0)
            break;
        const QByteArray key = text.mid(open + 1, end - open - 1);
        const QByteArray closing = "</" + key + ">";
        const int close = text.indexOf(closing, end + 1);
        if (close >= 0) {
            entries.insert(key, text.mid(end + 1, close - end - 1));
            position = qMax(position, close + closing.size() - 1);
        }
        ++position;
    }
    return entries;
}
