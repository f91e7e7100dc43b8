#include "gui/breakable_text.h"

namespace {

constexpr QChar mayBreak(0x200B);

} // namespace

QString breakableText(const QString &html, int run)
{
    QString result;
    QChar end; // of the tag or reference that is being copied
    int length = 0; // of the word so far
    for (const QChar letter : html) {
        result += letter;
        if (!end.isNull()) {
            if (letter == end)
                end = QChar();
            continue;
        }
        if (letter == '<' || letter == '&') {
            end = letter == '<' ? '>' : ';';
            continue;
        }
        length = letter.isSpace() ? 0 : length + 1;
        if (letter == '/' || letter == '\\' || length == run) {
            result += mayBreak;
            length = 0;
        }
    }
    return result;
}

QString withoutBreaks(QString text)
{
    return text.remove(mayBreak);
}
