#pragma once

#include <QByteArray>

#include <utility>
#include <vector>

// Where the tags of a message's text form end. A plain search for each closing tag runs to the end of the text whenever
// there is none, so that a text of nothing but opening tags costs the square of its size. Here all closing tags are
// found once, and found again by a hash of their key: the time stays linear, but for a sort.
class ClosingTags {
public:
    explicit ClosingTags(const QByteArray &text);

    // Place of the first ">" at or after `open`, -1 if there is none. Asked with rising places only.
    int endOfTag(int open) const;

    // Place of the first "</key>" behind the tag whose key is text[keyBegin, keyEnd), -1 if there is none.
    int find(int keyBegin, int keyEnd) const;

private:
    quint64 hash(int begin, int end) const;

    QByteArray text;
    mutable int lastEnd = -1;
    // Of the text up to a place, and what a letter there counts.
    std::vector<quint64> prefixes;
    std::vector<quint64> powers;
    int lastTag = -1;
    // Hash of the key and place of the "</", sorted.
    std::vector<std::pair<quint64, int>> tags;
};
