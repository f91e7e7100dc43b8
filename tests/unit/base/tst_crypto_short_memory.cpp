#include "base/crypto.h"

#include "support/fixed_random.h"
#include "support/testmain.h"

#include <openssl/crypto.h>

#include <cstdlib>

namespace {

// That allocation of OpenSSL fails, counted down; none if it has gone by or is 0.
int untilFailure = 0;

bool fails()
{
    return untilFailure > 0 && --untilFailure == 0;
}

void *allocate(std::size_t size, const char *, int)
{
    return fails() ? nullptr : std::malloc(size);
}
void *reallocate(void *memory, std::size_t size, const char *, int)
{
    return fails() ? nullptr : std::realloc(memory, size);
}
void release(void *memory, const char *, int)
{
    std::free(memory);
}

} // namespace

// There is no key where OpenSSL has no memory for it, and the log tells for what.
class TestCryptoShortMemory : public QObject {
    Q_OBJECT

private:
    const QByteArray secret = QByteArray::fromHex("0102030405060708090a0b0c0d0e0f1011121314");

private slots:
    void initTestCase() { QCOMPARE(CRYPTO_set_mem_functions(allocate, reallocate, release), 1); }

    void eachAllocationThatFailsHasItsReason()
    {
        const FixedRandom random(secret);
        const QByteArray peer(128, '\x5A');
        QByteArray B;
        // What is allocated once and for all.
        QVERIFY(!Crypto().generateKey(peer, B).isEmpty());

        QStringList reasons;
        for (int number = 1;; ++number) {
            LogCatcher log;
            B = "left over";
            untilFailure = number;
            const QByteArray key = Crypto().generateKey(peer, B);
            const bool met = untilFailure == 0;
            untilFailure = 0;
            if (!met)
                break;
            QCOMPARE(key.isEmpty(), !log.lines().isEmpty());
            // The products themselves are not asked whether there was room for them.
            if (!key.isEmpty())
                continue;
            QVERIFY(B.isEmpty());
            QCOMPARE(log.lines().size(), 1);
            if (!reasons.contains(log.lines().first()))
                reasons << log.lines().first();
        }

        const QString failed = "Crypto: key generation failed | ";
        QCOMPARE(reasons,
                 (QStringList { failed + "wrong bnp parameter", failed + "wrong bng parameter",
                                failed + "wrong bnq parameter", failed + "wrong bnA parameter",
                                failed + "BN_rand_range failed", failed + "wrong ctx parameter",
                                failed + "wrong bnB parameter", failed + "wrong bnS parameter" }));
    }
};

VELMOR_TEST(TestCryptoShortMemory)
#include "tst_crypto_short_memory.moc"
