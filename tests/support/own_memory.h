#pragma once

#include <QFile>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#ifdef Q_OS_WIN
#include <windows.h>
#endif

// All memory that this process can write to, freed blocks among it, a region at a time.
template <class Visit>
bool visitOwnMemory(Visit visit)
{
#ifdef Q_OS_WIN
    MEMORY_BASIC_INFORMATION region;
    for (std::uintptr_t at = 0; VirtualQuery(reinterpret_cast<void *>(at), &region, sizeof region) != 0;
         at += region.RegionSize) {
        if (region.State == MEM_COMMIT && region.Protect == PAGE_READWRITE)
            visit(at, at + region.RegionSize);
    }
    return true;
#else
    constexpr std::uintptr_t largest = 1U << 30;
    QFile maps("/proc/self/maps");
    if (!maps.open(QIODevice::ReadOnly))
        return false;
    for (const QByteArray &line : maps.readAll().split('\n')) {
        const int dash = line.indexOf('-');
        const int blank = line.indexOf(' ');
        if (dash < 0 || line.mid(blank + 1, 2) != "rw")
            continue;
        const auto from = std::uintptr_t(line.left(dash).toULongLong(nullptr, 16));
        const auto to = std::uintptr_t(line.mid(dash + 1, blank - dash - 1).toULongLong(nullptr, 16));
        // The sanitizers' own books are larger than anything a program has.
        if (to - from <= largest)
            visit(from, to);
    }
    return true;
#endif
}

// A text that stands nowhere in memory but where it is put by the code under test: it is kept turned round, and turned
// back a character at a time. Searched for in all memory that this process can write to, freed blocks among it.
class HiddenDigits {
public:
    // The digits, each one higher, 9 as 0.
    explicit HiddenDigits(const char *oneHigher) : turned(oneHigher) { }

    int size() const { return int(qstrlen(turned)); }
    char at(int i) const { return char('0' + (turned[i] - '0' + 9) % 10); }
    QString text() const
    {
        QString result;
        result.reserve(size());
        for (int i = 0; i < size(); ++i)
            result += QLatin1Char(at(i));
        return result;
    }

    // One byte each, which no search for 16-bit characters finds.
    std::string bytes() const
    {
        std::string result;
        for (int i = 0; i < size(); ++i)
            result += at(i);
        return result;
    }

    // Bytes from one digit to the next in the history of a QLineEdit, whose records begin with a bit field.
#ifdef Q_OS_WIN
    static constexpr std::size_t editStep = 20;
#else
    static constexpr std::size_t editStep = 16;
#endif

    // Where all digits stand one behind the other as 16-bit characters, `step` bytes from one to the next: 2 in a
    // QString.
    int places(std::size_t step) const
    {
        int found = 0;
        const bool seen =
            visitOwnMemory([&](std::uintptr_t from, std::uintptr_t to) { found += placesIn(from, to, step); });
        return seen ? found : -1;
    }

private:
    __attribute__((no_sanitize("address"))) int placesIn(std::uintptr_t from, std::uintptr_t to, std::size_t step) const
    {
        const std::uintptr_t length = std::uintptr_t(size() - 1) * step + sizeof(char16_t);
        const auto first = char16_t(at(0));
        int found = 0;
        for (std::uintptr_t place = from; place + length <= to; place += sizeof(char16_t)) {
            if (*reinterpret_cast<const char16_t *>(place) == first && standsAt(place, step))
                ++found;
        }
        return found;
    }
    __attribute__((no_sanitize("address"))) bool standsAt(std::uintptr_t place, std::size_t step) const
    {
        for (int i = 0; i < size(); ++i) {
            if (*reinterpret_cast<const char16_t *>(place + std::size_t(i) * step) != char16_t(at(i)))
                return false;
        }
        return true;
    }

    const char *turned;
};

// Part of a file that stands nowhere in memory but where the code under test puts it: every bit of it is kept turned.
class HiddenBytes {
public:
    static HiddenBytes ofFile(const QString &path, qint64 from, int count)
    {
        // Straight into its place, with no buffer between.
        QFile file(path);
        HiddenBytes hidden;
        QByteArray bytes(count, '\0');
        if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered) || !file.seek(from)
            || file.read(bytes.data(), count) != count)
            return hidden;
        for (char &one : bytes)
            one = char(~one);
        hidden.turned = bytes;
        return hidden;
    }
    static HiddenBytes of(const HiddenDigits &digits)
    {
        HiddenBytes hidden;
        for (int i = 0; i < digits.size(); ++i)
            hidden.turned.append(char(~digits.at(i)));
        return hidden;
    }
    // The same as 16-bit characters, for what is ASCII.
    HiddenBytes widened() const
    {
        HiddenBytes wide;
        for (const char one : turned)
            wide.turned.append(one).append(char(~'\0'));
        return wide;
    }

    bool isEmpty() const { return turned.isEmpty(); }
    int places() const
    {
        int found = 0;
        const bool seen = visitOwnMemory([&](std::uintptr_t from, std::uintptr_t to) { found += placesIn(from, to); });
        return seen ? found : -1;
    }
    int placesIn(std::uintptr_t from, std::uintptr_t to) const
    {
        const char first = char(~turned.at(0));
        const std::uintptr_t length = std::uintptr_t(turned.size());
        int found = 0;
        if (to - from < length)
            return 0;
        const auto *end = reinterpret_cast<const char *>(to - length + 1);
        const auto *place = reinterpret_cast<const char *>(from);
        for (; place < end; ++place) {
            place = static_cast<const char *>(std::memchr(place, first, std::size_t(end - place)));
            if (!place)
                break;
            found += standsAt(place) ? 1 : 0;
        }
        return found;
    }

private:
    bool standsAt(const char *bytes) const
    {
        for (int i = 0; i < turned.size(); ++i) {
            if (bytes[i] != char(~turned.at(i)))
                return false;
        }
        return true;
    }

    QByteArray turned;
};
