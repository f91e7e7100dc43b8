// No memory for what is asked of the system by size: the library's object, the list of slots.
#include "app/app.h"
#include "card/pkcs11.h"
#include "support/scripted_pkcs11/scripted_card.h"
#include "support/testmain.h"

#include <cstddef>
#include <new>

namespace {

bool memoryIsOut = false;

} // namespace

// These are the whole program's, which is why this class is a program by itself.
void *operator new(std::size_t size, const std::nothrow_t &) noexcept
{
    return memoryIsOut ? nullptr : ::operator new(size);
}

void *operator new[](std::size_t size, const std::nothrow_t &) noexcept
{
    return memoryIsOut ? nullptr : ::operator new[](size);
}

class TestNoMemory : public QObject {
    Q_OBJECT

private slots:
    void libraryIsNotLoaded();
    void slotsAreNotListed();
};

void TestNoMemory::libraryIsNotLoaded()
{
    ScriptedCard card;
    const LogCatcher log;
    Pkcs11 pkcs11;

    memoryIsOut = true;
    const int result = pkcs11.init();
    memoryIsOut = false;

    QCOMPARE(result, -1);
    QCOMPARE(
        log.lines().filter("Pkcs11 err: "),
        QStringList { "Pkcs11 err:  #1 Nie można załadować biblioteki: " + App::instance()->pkcsLibPath("x86_64") });
    QVERIFY(card.calls().isEmpty());
    // With memory again all is well.
    QCOMPARE(pkcs11.init(), 0);
}

void TestNoMemory::slotsAreNotListed()
{
    ScriptedCard card;
    card.addReader("Reader A");
    Pkcs11 pkcs11;
    QCOMPARE(pkcs11.initialize(), 0);

    memoryIsOut = true;
    const bool listed = pkcs11.detectSlots();
    memoryIsOut = false;

    QVERIFY(!listed);
    QCOMPARE(card.count("C_GetSlotList"), 1);
    QVERIFY(pkcs11.detectSlots());
}

int main(int argc, char *argv[])
{
    TestHome home;
    QApplication application(argc, argv);
    TestNoMemory test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_no_memory.moc"
