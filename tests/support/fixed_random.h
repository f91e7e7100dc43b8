#pragma once

#define OPENSSL_SUPPRESS_DEPRECATED
#include <openssl/rand.h>

#include <QByteArray>

#include <cstring>

// While it lives, the random numbers of OpenSSL are these bytes, repeated; with none, there is no randomness at all.
class FixedRandom {
public:
    explicit FixedRandom(const QByteArray &bytes)
    {
        source() = bytes;
        static const RAND_METHOD method { nullptr, &fill, nullptr, nullptr, &fill, nullptr };
        RAND_set_rand_method(&method);
    }
    ~FixedRandom() { RAND_set_rand_method(nullptr); }
    FixedRandom(const FixedRandom &) = delete;
    FixedRandom &operator=(const FixedRandom &) = delete;

private:
    static QByteArray &source()
    {
        static QByteArray bytes;
        return bytes;
    }
    static int fill(unsigned char *target, int size)
    {
        if (source().isEmpty())
            return 0;
        for (int i = 0; i < size; ++i)
            target[i] = static_cast<unsigned char>(source().at(i % source().size()));
        return 1;
    }
};
