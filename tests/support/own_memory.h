#pragma once

#include <QFile>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <string>

#ifdef Q_OS_WIN
#include <windows.h>
#endif

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
#ifdef Q_OS_WIN
        MEMORY_BASIC_INFORMATION region;
        for (std::uintptr_t at = 0; VirtualQuery(reinterpret_cast<void *>(at), &region, sizeof region) != 0;
             at += region.RegionSize) {
            if (region.State == MEM_COMMIT && region.Protect == PAGE_READWRITE)
                found += placesIn(at, at + region.RegionSize, step);
        }
#else
        constexpr std::uintptr_t largest = 1U << 30;
        QFile maps("/proc/self/maps");
        if (!maps.open(QIODevice::ReadOnly))
            return -1;
        for (const QByteArray &line : maps.readAll().split('\n')) {
            const int dash = line.indexOf('-');
            const int blank = line.indexOf(' ');
            if (dash < 0 || line.mid(blank + 1, 2) != "rw")
                continue;
            const auto from = std::uintptr_t(line.left(dash).toULongLong(nullptr, 16));
            const auto to = std::uintptr_t(line.mid(dash + 1, blank - dash - 1).toULongLong(nullptr, 16));
            // The sanitizers' own books are larger than anything a program has.
            if (to - from <= largest)
                found += placesIn(from, to, step);
        }
#endif
        return found;
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
