#include "base/crypto.h"
#include "base/crypto_memory.h"

#include "support/fixed_random.h"
#include "support/testmain.h"

#include <QCryptographicHash>
#include <QSet>

#define OPENSSL_SUPPRESS_DEPRECATED
#include <openssl/crypto.h>
#include <openssl/dh.h>

#include <memory>

// Expected keys, public values and transforms were computed with python3 (int, hashlib) from the formulas alone.
class TestCrypto : public QObject {
    Q_OBJECT

private:
    // The secret that a random source of these 20 bytes gives.
    static QByteArray secretBytes() { return QByteArray::fromHex("0102030405060708090a0b0c0d0e0f1011121314"); }

    // g * 0x1234567890abcdef1234567890abcdef12345678 mod p
    static QByteArray peerValue()
    {
        return QByteArray::fromHex("337ce2b55deba4b81c9d8e2b913a6ce6138ff80856dfe60e0ef936246270c3bd"
                                   "26493e35024b466d76dadc383edf7ebd3e83529f27383a388d6e8f7576bc8443"
                                   "f8a363fc7b276dc971a93c3fa558f38fd2b4a9c631850dfaed3b95c63539feb3"
                                   "216917ea1f4b0a15eb7ed544169d2756bf1889d2fa692e0677646827b97e127c");
    }

    static QByteArray primeOfTheLibrary()
    {
        const std::unique_ptr<DH, decltype(&DH_free)> group(DH_get_1024_160(), DH_free);
        QByteArray bytes(DH_size(group.get()), '\0');
        BN_bn2bin(DH_get0_p(group.get()), reinterpret_cast<unsigned char *>(bytes.data()));
        return bytes;
    }

    static const char *emptyHash() { return "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"; }

private slots:
    // What was given out by one way must not be freed by the other.
    void memoryCannotBeChangedOnceItIsInUse()
    {
        OPENSSL_free(OPENSSL_malloc(1));
        QVERIFY(!cleanseCryptoMemory());
    }

    void keyOfAFixedSecretIsTheKnownOne_data()
    {
        QTest::addColumn<QByteArray>("A");
        QTest::addColumn<QByteArray>("key");
        QTest::newRow("a peer's value") << peerValue()
                                        << QByteArray(
                                               "b356985e17eeb1021188f70378ad8b30470ee612be2931e8e9ea1967b4abe9ac");
        QTest::newRow("leading zeros of the peer's value do not count") << QByteArray(3, '\0')
                + peerValue() << QByteArray("b356985e17eeb1021188f70378ad8b30470ee612be2931e8e9ea1967b4abe9ac");
        QTest::newRow("one") << QByteArray("\x01")
                             << QByteArray("e12f08743344c0eab7afaa22bb71e2725f7e13dece6ac2d23711054ee787b6c2");
        QTest::newRow("two") << QByteArray("\x02")
                             << QByteArray("e306f945925f6740336ea7ef6f8f01a74b7b7cd032cf82ad2f98f0ea2f7a3255");
        QTest::newRow("shared value of two bytes")
            << QByteArray::fromHex("ac306757c479bed4c8af211848cada519d6e2f2f1d88895164be940b935aa078"
                                   "ace510630eef7ddf60c3e8cd03718bab28d5d6ab2eae2ac404c6cc7fed86e372"
                                   "46ad0fd2d2b40f8d84e143dc4bc24539bfc485abaa7b41cee30abde0bab2029021"
                                   "a867001a43e629f918f5022ed4cff2578ca4179d71214bc411a231c47871c0")
            << QByteArray("a12871fee210fb8619291eaea194581cbd2531e4b23759d225f6806923f63222");
        QTest::newRow("one zero byte") << QByteArray(1, '\0') << QByteArray(emptyHash());
        QTest::newRow("the prime itself") << primeOfTheLibrary() << QByteArray(emptyHash());
        QTest::newRow("10,000 bytes") << QByteArray(10000, '\xFF')
                                      << QByteArray("d2a019c3d499029bf42ddbd98b137e4e03ac616edb76c29e262002b08335941a");
    }
    void keyOfAFixedSecretIsTheKnownOne()
    {
        QFETCH(QByteArray, A);
        const FixedRandom random(secretBytes());
        QByteArray B("left over");

        const QByteArray key = Crypto().generateKey(A, B);

        QTEST(key.toHex(), "key");
        // g * 0x0102030405060708090a0b0c0d0e0f1011121314 mod p, whatever A is
        QCOMPARE(B.toHex(),
                 QByteArray("43b2d1d44f0780c206e81c1b1142452d93f71db9be59b410dd84e6dc34093b7f"
                            "d60e253c41458428a0296bdb050dc1bcf67502c0451fc189580371b072fa8beb"
                            "0d0855f995298e624b0ddd2d3c0eb2cfd31e43cb4afa5d6c43344cc1352c6f0f"
                            "ed8c1a3f02a8b3a9cc14d2dbc2350c71ba4899afaa373542be992d0d6eb1c3fd"));
    }

    void groupIsTheLibrarysOwn()
    {
        const std::unique_ptr<DH, decltype(&DH_free)> group(DH_get_1024_160(), DH_free);
        const std::unique_ptr<BN_CTX, decltype(&BN_CTX_free)> ctx(BN_CTX_new(), BN_CTX_free);
        const std::unique_ptr<BIGNUM, decltype(&BN_free)> number(BN_new(), BN_free);
        const FixedRandom random(secretBytes());
        QByteArray B;
        const QByteArray key = Crypto().generateKey(peerValue(), B);

        const auto product = [&](const BIGNUM *left, const QByteArray &right) {
            BN_bin2bn(reinterpret_cast<const unsigned char *>(right.constData()), right.size(), number.get());
            BN_mod_mul(number.get(), left, number.get(), DH_get0_p(group.get()), ctx.get());
            QByteArray bytes(BN_num_bytes(number.get()), '\0');
            BN_bn2bin(number.get(), reinterpret_cast<unsigned char *>(bytes.data()));
            return bytes;
        };
        QCOMPARE(B.toHex(), product(DH_get0_g(group.get()), secretBytes()).toHex());
        const std::unique_ptr<BIGNUM, decltype(&BN_free)> peer(BN_new(), BN_free);
        BN_bin2bn(reinterpret_cast<const unsigned char *>(peerValue().constData()), peerValue().size(), peer.get());
        QCOMPARE(key, QCryptographicHash::hash(product(peer.get(), secretBytes()), QCryptographicHash::Sha256));
    }

    void secretIsBelowTheOrderOfTheSubgroup_data()
    {
        QTest::addColumn<QByteArray>("random");
        QTest::addColumn<int>("size");
        QTest::newRow("one below") << QByteArray::fromHex("F518AA8781A8DF278ABA4E7D64B7CB9D49462352") << 32;
        // Never fits, however often it is drawn again.
        QTest::newRow("the order itself") << QByteArray::fromHex("F518AA8781A8DF278ABA4E7D64B7CB9D49462353") << 0;
    }
    void secretIsBelowTheOrderOfTheSubgroup()
    {
        QFETCH(QByteArray, random);
        const FixedRandom source(random);
        QByteArray B;
        QTEST(Crypto().generateKey("peer", B).size(), "size");
    }

    void secretsDiffer()
    {
        QSet<QByteArray> values, keys;
        for (int i = 0; i < 20; ++i) {
            QByteArray B;
            keys << Crypto().generateKey(peerValue(), B);
            values << B;
        }
        QCOMPARE(values.size(), 20);
        QCOMPARE(keys.size(), 20);
    }

    void secretOfZeroGivesNoPublicValue()
    {
        const FixedRandom random(QByteArray(20, '\0'));
        QByteArray B;
        QCOMPARE(Crypto().generateKey(peerValue(), B).toHex(), QByteArray(emptyHash()));
        QVERIFY(B.isEmpty());
    }

    void emptyPeerValueIsRefused()
    {
        LogCatcher log;
        QByteArray B("left over");

        QVERIFY(Crypto().generateKey({}, B).isEmpty());

        QVERIFY(B.isEmpty());
        QCOMPARE(log.lines(), QStringList { "Crypto: key generation failed | wrong A parameter" });
    }

    void withoutRandomnessThereIsNoKey()
    {
        const FixedRandom random({});
        LogCatcher log;
        QByteArray B;

        QVERIFY(Crypto().generateKey(peerValue(), B).isEmpty());

        QVERIFY(B.isEmpty());
        QCOMPARE(log.lines(), QStringList { "Crypto: key generation failed | BN_rand_range failed" });
    }

    void transformOfAValueIsTheKnownOne_data()
    {
        QTest::addColumn<QByteArray>("value");
        QTest::addColumn<QByteArray>("key");
        QTest::addColumn<QByteArray>("result");
        const QByteArray six = QByteArray::fromHex("58c8ccd6f852");
        QTest::newRow("as long as the key") << QByteArray("123456") << six << QByteArray("69faffe2cd64");
        QTest::newRow("the seventh byte takes the first of the key")
            << QByteArray("12345678") << six << QByteArray("69faffe2cd646ff0");
        QTest::newRow("shorter than the key") << QByteArray("1") << six << QByteArray("69");
        QTest::newRow("a key of one zero byte") << QByteArray("12") << QByteArray(1, '\0') << QByteArray("3132");
        QTest::newRow("zero bytes in the value") << QByteArray(3, '\0') << six << QByteArray("58c8cc");
    }
    void transformOfAValueIsTheKnownOne()
    {
        QFETCH(QByteArray, value);
        QFETCH(QByteArray, key);

        const QByteArray once = Crypto::encryptValue(value, key);

        QTEST(once.toHex(), "result");
        QCOMPARE(Crypto::encryptValue(once, key), value);
    }

    void transformOfNothingOrWithNothingIsLogged()
    {
        LogCatcher log;
        QVERIFY(Crypto::encryptValue({}, "key").isEmpty());
        QVERIFY(Crypto::encryptValue("value", {}).isEmpty());
        QVERIFY(Crypto::encryptValue({}, {}).isEmpty());
        QCOMPARE(
            log.lines(),
            (QStringList { "provided empty input array", "The key array is empty", "provided empty input array" }));
    }

    void keyOfASeedIsTheKnownOne_data()
    {
        QTest::addColumn<QByteArray>("seed");
        QTest::addColumn<QByteArray>("key");
        // Seeds chosen by the first byte of their hash.
        QTest::newRow("00: index 0") << QByteArray("286") << QByteArray("00328ce57bbc");
        QTest::newRow("19: index 25") << QByteArray("9") << QByteArray("03f7c3017bb5");
        QTest::newRow("1A: index 0 again") << QByteArray("50") << QByteArray("1a6562590ef1");
        QTest::newRow("7F: the last without a sign, index 23") << QByteArray("71") << QByteArray("2fa991a34bb3");
        QTest::newRow("80: the first with a sign, index 24") << QByteArray("168") << QByteArray("ffbf5f4a6c3c");
        QTest::newRow("FF: index 21") << QByteArray("70") << QByteArray("04ffc1c4d03d");
        QTest::newRow("a GUID") << QByteArray("0123456789abcdef").repeated(4) << QByteArray("58c8ccd6f852");
        QTest::newRow("nothing") << QByteArray() << QByteArray("e4649b934ca4");
    }
    void keyOfASeedIsTheKnownOne()
    {
        QFETCH(QByteArray, seed);
        QTEST(Crypto::deriveKey(seed).toHex(), "key");
    }

    // Whoever sends can begin a conversation, and nobody ends one.
    void oldestKeysGoBeyondSixtyFour()
    {
        Crypto crypto;
        for (int i = 0; i < 64; ++i)
            crypto.storeKey("id" + QByteArray::number(i), "key");
        QCOMPARE(crypto.getKey("id0"), QByteArray("key"));
        // One that is known already takes no room.
        crypto.storeKey("id0", "later");
        QCOMPARE(crypto.getKey("id0"), QByteArray("later"));
        QCOMPARE(crypto.getKey("id1"), QByteArray("key"));

        crypto.storeKey("id64", "key");

        QCOMPARE(crypto.getKey("id0"), QByteArray());
        QCOMPARE(crypto.getKey("id1"), QByteArray("key"));
        QCOMPARE(crypto.getKey("id64"), QByteArray("key"));
    }

    void keysAreKeptByIdAndReplaced()
    {
        Crypto crypto;
        crypto.storeKey("one", "first");
        crypto.storeKey("two", "other");
        crypto.storeKey("one", "second");

        QCOMPARE(crypto.getKey("one"), QByteArray("second"));
        QCOMPARE(crypto.getKey("two"), QByteArray("other"));
        QCOMPARE(crypto.encrypt("value", "one"), Crypto::encryptValue("value", "second"));
    }

    void unknownIdEncryptsToNothing()
    {
        LogCatcher log;
        QVERIFY(Crypto().encrypt("value", "nobody's").isEmpty());
        QCOMPARE(log.lines(), (QStringList { "The key was not found", "The key array is empty" }));
    }
};

VELMOR_TEST(TestCrypto)
#include "tst_crypto.moc"
