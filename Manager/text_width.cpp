#include "text_width.h"

#include "base/secret_string.h"

#include <QTextDocument>

QString elidedToWidth(const QString &text, int textWidth, int labelWidth)
{
    constexpr int reserve = 20;
    const int room = labelWidth - reserve;
    if (text.isEmpty() || textWidth <= room)
        return text;
    const double averageWidth = static_cast<double>(textWidth) / text.size();
    const int shown = qMax(0, static_cast<int>(room / averageWidth));
    return joinSecrets({ QStringView(text).left(shown), u"..." });
}

QString plainToolTip(const QString &text)
{
    return Qt::mightBeRichText(text) ? "<qt>" + text.toHtmlEscaped() + "</qt>" : text;
}
