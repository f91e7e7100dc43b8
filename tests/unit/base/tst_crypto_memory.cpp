#include "base/crypto_memory.h"

#include "support/own_memory.h"
#include "support/testmain.h"

#include <openssl/crypto.h>

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
};

VELMOR_TEST(TestCryptoMemory)
#include "tst_crypto_memory.moc"
