#include "support/testmain.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include <dlfcn.h>
#include <malloc.h>

// What this process frees is overwritten, in whichever way it is freed: the program's own free() and realloc() are
// linked into this test. What was freed last is what the allocator hands out next for the same size, so the bytes can
// be looked at.
class TestCleanFree : public QObject {
    Q_OBJECT

private:
    static constexpr std::size_t size = 408;
    // What the allocator itself writes at the beginning of a free block.
    static constexpr std::size_t records = 2 * sizeof(void *);

    // Not seen through by the compiler, which knows what the C library's functions do and leaves them out.
    void *(*volatile take)(std::size_t) = std::malloc;
    void *(*volatile change)(void *, std::size_t) = std::realloc;
    void (*volatile release)(void *) = std::free;

    char *filled() const
    {
        auto *block = static_cast<char *>(take(size));
        std::memset(block, 'S', malloc_usable_size(block));
        return block;
    }
    static std::uintptr_t placeOf(const void *block) { return reinterpret_cast<std::uintptr_t>(block); }
    static std::size_t leftIn(const char *block, std::size_t from, std::size_t to)
    {
        const volatile char *bytes = block;
        std::size_t left = 0;
        for (std::size_t i = from; i < to; ++i)
            left += bytes[i] != 0 ? 1 : 0;
        return left;
    }
    // Whether the block that was there has been freed, and every byte of it overwritten.
    bool wentOverwritten(std::uintptr_t place) const
    {
        auto *next = static_cast<char *>(take(size));
        const bool clean = placeOf(next) == place && leftIn(next, records, malloc_usable_size(next)) == 0;
        release(next);
        return clean;
    }

private slots:
    void initTestCase()
    {
        Dl_info found;
        if (dladdr(reinterpret_cast<void *>(release), &found) == 0 || std::strstr(found.dli_fname, "libc.so")
            || std::strstr(found.dli_fname, "san.so"))
            QSKIP("The sanitizer has a free() of its own");
    }

    void freedBlockIsOverwrittenToItsEnd()
    {
        char *block = filled();
        const std::uintptr_t place = placeOf(block);
        release(block);
        QVERIFY(wentOverwritten(place));
    }

    void nothingIsFreedWithoutABlock()
    {
        release(nullptr);
        char *block = static_cast<char *>(change(nullptr, size));
        QVERIFY(block && malloc_usable_size(block) >= size);
        release(block);
    }

    void noSizeFreesTheBlock()
    {
        char *block = filled();
        const std::uintptr_t place = placeOf(block);
        QVERIFY(!change(block, 0));
        QVERIFY(wentOverwritten(place));
    }

    void blockStaysWhileAtLeastHalfOfItIsUsed()
    {
        char *block = filled();
        const std::size_t room = malloc_usable_size(block);
        for (const std::size_t wanted : { room, room - 1, room / 2 }) {
            QCOMPARE(placeOf(change(block, wanted)), placeOf(block));
            QCOMPARE(leftIn(block, 0, room), room);
        }
        release(block);
    }

    void blockThatMovesTakesItsBytesAlongAndLeavesNone_data()
    {
        QTest::addColumn<int>("wanted");
        char *block = filled();
        const int room = int(malloc_usable_size(block));
        release(block);
        QTest::newRow("one more than its room") << room + 1;
        QTest::newRow("twice its room") << 2 * room;
        QTest::newRow("less than half") << room / 2 - 1;
        QTest::newRow("one byte") << 1;
    }
    void blockThatMovesTakesItsBytesAlongAndLeavesNone()
    {
        QFETCH(int, wanted);
        char *block = filled();
        const std::size_t room = malloc_usable_size(block);
        const std::uintptr_t place = placeOf(block);

        auto *moved = static_cast<char *>(change(block, std::size_t(wanted)));

        QVERIFY(moved);
        QVERIFY(placeOf(moved) != place);
        QVERIFY(malloc_usable_size(moved) >= std::size_t(wanted));
        QCOMPARE(QByteArray(moved, int(std::min(room, std::size_t(wanted)))),
                 QByteArray(int(std::min(room, std::size_t(wanted))), 'S'));
        QVERIFY(wentOverwritten(place));
        release(moved);
    }

    void blockThatCannotMoveStaysAsItIs()
    {
        char *block = filled();
        const std::size_t room = malloc_usable_size(block);
        QVERIFY(!change(block, PTRDIFF_MAX));
        QCOMPARE(leftIn(block, 0, room), room);
        release(block);
    }
};

// A program of its own, for the free() in it.
int main(int argc, char *argv[])
{
    TestHome home;
    QCoreApplication application(argc, argv);
    TestCleanFree test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_clean_free_lin.moc"
