#include "base/crypto.h"

#include "support/fixed_random.h"
#include "support/testmain.h"

#include <openssl/crypto.h>

#include <cstdlib>

namespace {

// Allocations of the library so far in this call, and the one that fails.
int allocations = 0;
int failing = -1;

void *allocate(std::size_t size, const char *, int)
{
    return allocations++ == failing ? nullptr : std::malloc(size);
}

void *allocateAgain(void *block, std::size_t size, const char *, int)
{
    return allocations++ == failing ? nullptr : std::realloc(block, size);
}

void release(void *block, const char *, int)
{
    std::free(block);
}

} // namespace

// The agreement while memory runs out at each place where the library asks for some.
class TestCryptoMemory : public QObject {
    Q_OBJECT

private slots:
    void everyFailureIsNamedAndGivesNoKey()
    {
        const FixedRandom random("fixed");
        const QString prefix = "Crypto: key generation failed | ";
        QStringList reasons;
        int total = 0;
        for (failing = 0; failing <= total; ++failing) {
            LogCatcher log;
            allocations = 0;
            QByteArray B;
            const QByteArray key = Crypto().generateKey("peer", B);
            total = allocations;
            for (const QString &line : log.lines()) {
                QVERIFY2(line.startsWith(prefix), qPrintable(line));
                reasons << line.mid(prefix.size());
                QVERIFY(key.isEmpty());
                QVERIFY(B.isEmpty());
            }
        }
        reasons.removeDuplicates();
        QCOMPARE(reasons,
                 (QStringList { "wrong bnp parameter", "wrong bng parameter", "wrong bnq parameter",
                                "wrong bnA parameter", "BN_rand_range failed", "wrong ctx parameter",
                                "wrong bnB parameter", "wrong bnS parameter" }));
    }
};

int main(int argc, char *argv[])
{
    // Before the library's first allocation, else it is refused.
    if (CRYPTO_set_mem_functions(allocate, allocateAgain, release) != 1)
        return 1;
    TestCryptoMemory test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_crypto_memory.moc"
