#pragma once

#include <QByteArray>

class Crypto {
public:
    // 64 lower-case hexadecimal digits from the system's random source; the value of the setting GUID.
    static QByteArray generateSeed();
};
