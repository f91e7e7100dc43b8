#include "base/common.h"

QString sliceText(const QString &text, const QString &pattern, const QString &fallback)
{
    if (pattern.size() < 3)
        return fallback;
    const QString mark = pattern.mid(1, pattern.size() - 2);
    const int at = pattern.startsWith('^') ? text.indexOf(mark) : text.lastIndexOf(mark);
    if (at < 0)
        return fallback;
    return pattern.endsWith('$') ? text.mid(at + mark.size()) : text.left(at);
}

QString sliceTextChain(const QString &text, const QStringList &patterns, const QString &fallback)
{
    QString result = text;
    for (const QString &pattern : patterns)
        result = sliceText(result, pattern);
    return result.isEmpty() ? fallback : result;
}
