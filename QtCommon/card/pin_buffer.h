#pragma once

#include <QString>

#include <string>

// The bytes of a PIN for the length of one card call, wiped when they go. The string it is made from belongs to the
// caller and to Qt; it is the copy of ours that must not stay behind in memory.
class PinBuffer {
public:
    // One byte a character: a PIN is made of digits.
    explicit PinBuffer(const QString &pin)
    {
        // Room for all at once, so that growing leaves no second copy.
        bytes.reserve(static_cast<std::size_t>(pin.size()));
        for (const QChar character : pin)
            bytes.push_back(character.toLatin1());
    }
    ~PinBuffer()
    {
        // Through volatile, or the compiler may leave out writes that nobody reads.
        volatile char *byte = bytes.data();
        for (std::size_t left = bytes.size(); left > 0; --left)
            *byte++ = 0;
    }
    PinBuffer(const PinBuffer &) = delete;
    PinBuffer &operator=(const PinBuffer &) = delete;

    // Never null: a null pointer would mean something else to the library than an empty PIN.
    unsigned char *data() { return reinterpret_cast<unsigned char *>(bytes.data()); }
    unsigned long size() const { return static_cast<unsigned long>(bytes.size()); }

private:
    std::string bytes;
};
