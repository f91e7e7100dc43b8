#include "specimens/fixed_random.h"

// The call is deprecated in favour of a provider of one's own, which would be longer than all of this program.
#define OPENSSL_SUPPRESS_DEPRECATED
#include <openssl/rand.h>

#include <QByteArray>
#include <QCryptographicHash>

namespace specimen {

namespace {

// Digests of a counter, one after the other: no two keys or signatures get the same bytes.
int fill(unsigned char *target, int size)
{
    static quint64 counter = 0;
    static QByteArray left;
    for (int i = 0; i < size; ++i) {
        if (left.isEmpty())
            left = QCryptographicHash::hash("specimen " + QByteArray::number(++counter), QCryptographicHash::Sha256);
        target[i] = static_cast<unsigned char>(left.at(0));
        left.remove(0, 1);
    }
    return 1;
}

} // namespace

void fixRandomNumbers()
{
    static const RAND_METHOD method { nullptr, &fill, nullptr, nullptr, &fill, nullptr };
    RAND_set_rand_method(&method);
}

} // namespace specimen
