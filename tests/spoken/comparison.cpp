#include "spoken/comparison.h"

#include <QHash>

#include <algorithm>

namespace Comparison {

namespace {

// Shorter texts are found as words only, since anything holds a letter or a digit.
constexpr int longEnough = 4;

QString wordsOf(const QString &text)
{
    QString result;
    for (const QChar letter : text.toLower())
        result += letter.isLetterOrNumber() ? letter : QChar(' ');
    result = ' ' + result.simplified() + ' ';
    return result.replace(" kan ", " can ");
}

} // namespace

// The same texts come at every step.
QString bare(const QString &text)
{
    static QHash<QString, QString> known;
    auto found = known.find(text);
    if (found == known.end())
        found = known.insert(text, wordsOf(text).remove(' '));
    return *found;
}

QStringList unheard(const QStringList &shown, const QStringList &heard)
{
    QStringList missing;
    for (const QString &text : shown) {
        const QString wanted = bare(text);
        const bool found = std::any_of(heard.begin(), heard.end(), [&](const QString &utterance) {
            return wanted.size() >= longEnough ? bare(utterance).contains(wanted)
                                               : wordsOf(utterance).contains(wordsOf(text));
        });
        if (!wanted.isEmpty() && !found && !missing.contains(text))
            missing << text;
    }
    return missing;
}

QStringList notShown(const QStringList &heard, const QStringList &shown, const QStringList &onlySpoken,
                     QStringList *used)
{
    QStringList known = shown + onlySpoken;
    std::stable_sort(known.begin(), known.end(),
                     [](const QString &a, const QString &b) { return bare(a).size() > bare(b).size(); });
    QStringList strange;
    for (const QString &utterance : heard) {
        QString rest = bare(utterance);
        // Part of a longer text, as a link in a report.
        if (rest.size() >= longEnough
            && std::any_of(shown.begin(), shown.end(), [&](const QString &text) { return bare(text).contains(rest); }))
            continue;
        for (const QString &phrase : qAsConst(known)) {
            const QString letters = bare(phrase);
            if (letters.isEmpty() || !rest.contains(letters))
                continue;
            // A mark in its place, so that what stood on either side does not become a word.
            rest.replace(letters, " ");
            if (used && onlySpoken.contains(phrase) && !used->contains(phrase))
                *used << phrase;
        }
        rest = rest.simplified();
        if (!rest.isEmpty())
            strange << QString("\"%1\" of \"%2\"").arg(rest, utterance);
    }
    return strange;
}

} // namespace Comparison
