#include "base/closing_tags.h"

#include <algorithm>
#include <cstring>

namespace {
// Any odd number with its bits well spread.
constexpr quint64 base = 0x9E3779B97F4A7C15ULL;
} // namespace

ClosingTags::ClosingTags(const QByteArray &message) : text(message)
{
    if (!text.contains("</"))
        return;
    const auto size = static_cast<std::size_t>(text.size());
    prefixes.resize(size + 1, 0);
    powers.resize(size + 1, 1);
    for (std::size_t i = 0; i < size; ++i) {
        prefixes[i + 1] = prefixes[i] * base + static_cast<uchar>(text.at(static_cast<int>(i))) + 1;
        powers[i + 1] = powers[i] * base;
    }
    int end = text.size();
    for (int place = text.size() - 1; place >= 0; --place) {
        if (text.at(place) == '>')
            end = place;
        else if (end < text.size() && text.at(place) == '<' && text.at(place + 1) == '/')
            tags.emplace_back(hash(place + 2, end), place);
    }
    lastTag = tags.empty() ? -1 : tags.front().second;
    std::sort(tags.begin(), tags.end());
}

quint64 ClosingTags::hash(int begin, int end) const
{
    const auto from = static_cast<std::size_t>(begin);
    const auto to = static_cast<std::size_t>(end);
    return prefixes[to] - prefixes[from] * powers[to - from];
}

int ClosingTags::endOfTag(int open) const
{
    if (lastEnd < open)
        lastEnd = text.indexOf('>', open);
    return lastEnd;
}

int ClosingTags::find(int keyBegin, int keyEnd) const
{
    if (lastTag <= keyEnd)
        return -1;
    const int size = keyEnd - keyBegin;
    const quint64 wanted = hash(keyBegin, keyEnd);
    auto tag = std::lower_bound(tags.begin(), tags.end(), std::make_pair(wanted, keyEnd + 1));
    for (; tag != tags.end() && tag->first == wanted; ++tag) {
        const int place = tag->second;
        // Two keys of one hash are unlikely, yet what arrives may have been made by anybody.
        if (place + 2 + size < text.size() && text.at(place + 2 + size) == '>'
            && std::memcmp(text.constData() + place + 2, text.constData() + keyBegin, static_cast<std::size_t>(size))
                == 0)
            return place;
    }
    return -1;
}
