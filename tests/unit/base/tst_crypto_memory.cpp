#include "base/crypto.h"
#include "base/crypto_memory.h"

#include "support/fixed_random.h"
#include "support/own_memory.h"
#include "support/proc_status.h"
#include "support/testmain.h"

#include <openssl/crypto.h>

#include <array>

// OpenSSL leaves nothing in what it has freed.
class TestCryptoMemory : public QObject {
    Q_OBJECT

private:
    const HiddenDigits digits { "62059384" };

    static constexpr std::size_t room = 64;

    void put(void *memory) const
    {
        auto *characters = static_cast<char16_t *>(memory);
        for (int i = 0; i < digits.size(); ++i)
            characters[i] = char16_t(digits.at(i));
    }

private slots:
    void initTestCase() { QVERIFY(cleanseCryptoMemory()); }

    void freedBlockIsOverwritten()
    {
        void *memory = OPENSSL_malloc(room);
        put(memory);
        QCOMPARE(digits.places(2), 1);
        OPENSSL_free(memory);
        QCOMPARE(digits.places(2), 0);
        OPENSSL_free(nullptr);
    }

    void blockThatGrowsLeavesNothingBehind()
    {
        void *memory = OPENSSL_malloc(room);
        put(memory);
        memory = OPENSSL_realloc(memory, room * 1024);
        // Wine keeps the registers through which they were copied.
        QVERIFY(digits.places(2) > 0);
        memory = OPENSSL_realloc(memory, room / 2);
        QVERIFY(digits.places(2) > 0);
        QVERIFY(!OPENSSL_realloc(memory, 0));
        // The same way once more with other bytes.
        OPENSSL_free(OPENSSL_realloc(OPENSSL_realloc(OPENSSL_zalloc(room), room * 1024), room / 2));
        QCOMPARE(digits.places(2), 0);
        memory = OPENSSL_realloc(nullptr, room);
        QVERIFY(memory);
        OPENSSL_free(memory);
    }

    // One byte too many would be the allocator's own, between two blocks.
    void nothingBesideTheBlockIsOverwritten()
    {
        constexpr std::size_t largest = 64;
        for (std::size_t size = 1; size <= largest; ++size) {
            std::array<void *, 16> blocks {};
            for (void *&block : blocks)
                block = OPENSSL_zalloc(size);
            for (void *&block : blocks)
                block = OPENSSL_realloc(block, size + 1);
            for (void *block : blocks)
                OPENSSL_free(block);
        }
    }

    void freedBlockIsGivenBack()
    {
#ifdef Q_OS_LINUX
        constexpr std::size_t megabytes = 4;
        constexpr int rounds = 192;
        constexpr long kilobytes = 1024;
        const long before = numberInStatus("/proc/self/status", "VmRSS");
        QVERIFY(before > 0);
        for (int round = 0; round < rounds; ++round)
            OPENSSL_free(OPENSSL_zalloc(megabytes << 20));
        // A checker of memory keeps freed blocks for a while, and not all of them.
        QVERIFY(numberInStatus("/proc/self/status", "VmRSS") - before < rounds / 2 * long(megabytes) * kilobytes);
#else
        QSKIP("Done on the other platform");
#endif
    }

    // Neither as a number nor as bytes.
    void agreementOnAKeyLeavesNoSecretBehind()
    {
#ifdef Q_OS_WIN
        QSKIP("Wine keeps the registers through which they were copied");
#elif defined(__SANITIZE_ADDRESS__)
        QSKIP("The sanitizer guards what was freed, which is looked at here");
#endif
        // A secret of two, so that the shared value is twice the peer's: these digits, sixteen times.
        const FixedRandom random(QByteArray(19, '\0') + '\x02');
        const HiddenBytes shared = HiddenBytes::of(HiddenDigits("82051473"));
        // As memory holds a number, from its end.
        const HiddenBytes number = HiddenBytes::of(HiddenDigits("37415028"));
        QByteArray B;
        // Functions that are called for the first time leave registers behind, of other bytes here.
        Crypto().generateKey(QByteArray(128, '\x01'), B);

        const QByteArray key = Crypto().generateKey(QByteArray::fromHex("1b989c9a18199b19").repeated(16), B);

        QCOMPARE(key.size(), 32);
        QCOMPARE(shared.places(), 0);
        QCOMPARE(number.places(), 0);
    }
};

VELMOR_TEST(TestCryptoMemory)
#include "tst_crypto_memory.moc"
