#include "base/crypto.h"

#include <random>

QByteArray Crypto::generateSeed()
{
    constexpr int seedBytes = 32;
    std::random_device device;
    QByteArray seed;
    for (int i = 0; i < seedBytes; ++i) {
        std::mt19937 generator(device());
        std::uniform_int_distribution<int> byte(0, 255);
        seed += QByteArray::number(byte(generator), 16).rightJustified(2, '0');
    }
    return seed;
}
