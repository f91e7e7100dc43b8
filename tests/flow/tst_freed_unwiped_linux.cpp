#include "support/hidden_pins.h"
#include "support/viewers.h"

#include "base/crypto_memory.h"
#include "base/secret_string.h"
#include "card/card-parser.h"
#include "card/cert_store.h"
#include "card/pkcs11.h"
#include "thproxy.h"

#include <QTableWidget>
#include <QThread>

#include <atomic>

#include <execinfo.h>
#include <malloc.h>

// Texts and bytes of which the program's own code is the last holder are overwritten before they are freed. In the
// product on Linux free() itself sees to that whoever frees; elsewhere nothing does, and what is left behind is a
// matter of luck: the block is soon in use for something else, so that searching the memory afterwards tells little.
// Here every block is looked into as it is freed.

extern "C" {
void __libc_free(void *block); // NOLINT(bugprone-reserved-identifier)
extern const char __executable_start; // NOLINT(bugprone-reserved-identifier)
extern const char etext;
}

namespace {

struct Needle {
    QString what;
    HiddenBytes bytes;
    int step; // bytes of a character
    bool byAnybody; // else by the program's own code alone: what is shown, the toolkit copies for itself
};
// Filled before anything is watched, and not touched while it is.
std::vector<Needle> needles;

constexpr int mostFrames = 16;
struct Finding {
    const Needle *needle;
    void *frames[mostFrames];
    int depth;
};
constexpr int mostFindings = 64;
Finding findings[mostFindings];
std::atomic<int> found { 0 };
std::atomic<bool> watching { false };

// A QString's or QByteArray's block that nobody holds any more, as the toolkit's header QArrayData begins it.
bool isArrayOfItsOwn(const void *block, std::size_t room)
{
    QArrayData header;
    if (room < sizeof header)
        return false;
    std::memcpy(static_cast<void *>(&header), block, sizeof header);
    return header.ref.atomic.loadRelaxed() == 0 && header.offset == sizeof header && header.size >= 0
        && header.size <= int(room - sizeof header);
}

[[maybe_unused]] void lookInto(const void *block, bool byOurselves)
{
    const std::size_t room = malloc_usable_size(const_cast<void *>(block));
    if (!isArrayOfItsOwn(block, room))
        return;
    // What is behind the text was left there by the block's last owner.
    const auto from = reinterpret_cast<std::uintptr_t>(block) + sizeof(QArrayData);
    const auto length = std::uintptr_t(static_cast<const QArrayData *>(block)->size);
    for (const Needle &needle : needles) {
        if (!byOurselves && !needle.byAnybody)
            continue;
        const std::uintptr_t to = std::min(from + length * needle.step, from - sizeof(QArrayData) + room);
        if (needle.bytes.placesIn(from, to) == 0)
            continue;
        const int place = found++;
        if (place >= mostFindings)
            return;
        findings[place].needle = &needle;
        findings[place].depth = backtrace(findings[place].frames, mostFrames);
    }
}

} // namespace

#ifndef __SANITIZE_ADDRESS__
// QArrayData::deallocate jumps here, so the caller is whoever let go.
extern "C" __attribute__((visibility("default"))) void free(void *block)
{
    const auto *caller = static_cast<const char *>(__builtin_return_address(0));
    if (block && watching)
        lookInto(block, caller >= &__executable_start && caller < &etext);
    __libc_free(block);
}
#endif

class TestFreedUnwiped : public QObject, private HiddenPins {
    Q_OBJECT

private:
    static void lookFor(const char *file, qint64 from, int count, bool shown = false)
    {
        const HiddenBytes bytes = HiddenBytes::ofFile(QString(VELMOR_TEST_ROOT "/devkit/cards/") + file, from, count);
        QVERIFY2(!bytes.isEmpty(), file);
        const QString what = QString("%1 from %2").arg(file).arg(from);
        needles.push_back({ what, bytes, 1, true });
        if (shown)
            needles.push_back({ what + ", as text", bytes.widened(), 2, false });
    }
    static void lookFor(const char *what, const HiddenDigits &digits)
    {
        needles.push_back({ what, HiddenBytes::of(digits), 1, true });
        needles.push_back({ QString("%1, as text").arg(what), HiddenBytes::of(digits).widened(), 2, true });
    }
    void enterPins(bool pinLocked)
    {
        openPinPage(sim::Qualified);
        typeAll(pinLocked);
        send(pinLocked);
        QVERIFY(waitForPage("pageCorrectChange"));
    }
    static void tell()
    {
        watching = false;
        const int count = std::min(found.load(), mostFindings);
        for (int i = 0; i < count; ++i) {
            std::fprintf(stderr, "%s was freed as it was by\n", qPrintable(findings[i].needle->what));
            std::fflush(stderr);
            backtrace_symbols_fd(findings[i].frames, findings[i].depth, 2);
        }
    }

private slots:
    void initTestCase()
    {
#ifdef __SANITIZE_ADDRESS__
        QSKIP("The sanitizer has a free() of its own");
#endif
        Flow::setUpApplication();
        QVERIFY(cleanseCryptoMemory());
        lookFor("anna/DG1.bin", 10, 9, true);
        lookFor("anna/DG11.bin", 13, 11, true);
        lookFor("anna/DG13.bin", 67, 8, true);
        lookFor("anna/authentication-1.der", 273, 10, true); // her first names
        lookFor("long-names/DG13.bin", 0x19, 9, true); // of the surname
        lookFor("long-names/DG13.bin", 0x42, 12, true); // first name
        lookFor("anna/DG2.bin", 200, 64);
        lookFor("anna/DG2.bin", 13000, 64);
        for (const char *file :
             { "anna/authentication-1.der", "anna/authorization-1.der", "anna/presence-1.der", "anna/qualified-1.der" })
            lookFor(file, 440, 64);
        lookFor("old PIN", oldPin);
        lookFor("new PIN", newPin);
        lookFor("PUK", hiddenPuk);
        void *frame;
        // It loads what it needs when it is called first.
        backtrace(&frame, 1);
    }
    void init()
    {
        QVERIFY(world.reset());
        openWindow();
        found = 0;
    }
    void cleanup()
    {
        tell();
        closeWindow();
    }

    // Else all that follows would be silent.
    void whatIsLeftIsSeen()
    {
        watching = true;
        {
            QString text = hiddenPuk.text();
            QCOMPARE(text.size(), 8);
        }
        QCOMPARE(found.load(), 1);
        {
            QString text = hiddenPuk.text();
            wipeSecret(text);
        }
        QCOMPARE(found.load(), 1);
        watching = false;
        found = 0;
    }

    void cardIsReadAndGoes_data()
    {
        QTest::addColumn<QString>("card");
        QTest::newRow("ordinary") << "anna";
        // With tool tips, which tell what is cut off.
        QTest::newRow("long names") << "long-names";
    }
    void cardIsReadAndGoes()
    {
        QFETCH(QString, card);
        QVERIFY(world.addReader("Czytnik Alfa"));
        watching = true;
        QVERIFY(showCard(card.toStdString()));
        for (const char *arrow :
             { "bArrowICAO", "bArrowAuthenCert", "bArrowAuthorCert", "bArrowPresenceCert", "bArrowQualifiedCert" }) {
            click(arrow);
            click("bWroc");
        }
        window->loadedReaders({}, "NO_CARD");
        QVERIFY(waitForWorker());
        QCOMPARE(found.load(), 0);
    }
    void certificateIsOpened()
    {
        Viewers viewers;
        viewers.install("gcr-viewer");
        teachCard(false);
        QVERIFY(showCard("anna"));
        click("bArrowAuthenCert");
        watching = true;
        find<QTableWidget>("tableCert")->findChild<QPushButton *>("bDetailsCert")->click();
        QTRY_COMPARE(viewers.started(), 1);
        QTRY_VERIFY(loaderShown());
        QTRY_VERIFY(!loaderShown());
        QCOMPARE(found.load(), 0);
    }
    void anotherCardComesInItsPlace()
    {
        teachCard(false);
        watching = true;
        QVERIFY(showCard("anna"));
        QVERIFY(world.removeCard("Czytnik Alfa"));
        QVERIFY(showCard("jan"));
        QCOMPARE(found.load(), 0);
    }
    void answersComeTooLate()
    {
        const QString reader = "Czytnik Alfa";
        teachCard(false);
        QVERIFY(showCard("anna"));
        window->loadedReaders({}, "NO_CARD");
        watching = true;
        emit window->getConteinersAndICAO(reader);
        emit window->getCerts(reader, true, true, true, true);
        emit window->getPhoto(reader);
        QVERIFY(waitForWorker());
        QCOMPARE(found.load(), 0);
    }
    // What is read anew takes the place of what was there.
    void fileIsReplaced()
    {
        const auto content = [](const char *name) {
            QFile file(QString(VELMOR_TEST_ROOT "/devkit/cards/anna/") + name);
            file.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
            return file.read(file.size());
        };
        watching = true;
        CertStore store;
        store.setCerts(CertStore::Presence, content("presence-1.der"));
        store.setCerts(CertStore::Presence, "another");
        QCOMPARE(found.load(), 0);
        store.setQualifiedCerts({ content("qualified-1.der") });
        store.setQualifiedCerts({});
        QCOMPARE(found.load(), 0);
        DGParser parser;
        parser.loadDg("DG1", content("DG1.bin"));
        parser.loadDg("DG1", "another");
        QCOMPARE(found.load(), 0);
    }
    // As on a card that is slower than the window, or after it.
    void workerIsTheLast()
    {
        closeWindow();
        teachCard(false);
        QVERIFY(world.insertCard("Czytnik Alfa", "anna"));
        Pkcs11 card;
        ThProxy worker(&card);
        worker.readers(0, 0);
        worker.selectReader("Czytnik Alfa");
        QSignalSpy answer(&worker, &ThProxy::certsCountFin);
        worker.certsCount("Czytnik Alfa");
        QCOMPARE(answer.value(0).value(3).toInt(), 1);
        watching = true;
        worker.getConteinersAndICAO("Czytnik Alfa");
        worker.getPhoto("Czytnik Alfa");
        worker.getCerts("Czytnik Alfa", true, true, true, true);
        QCOMPARE(found.load(), 0);
    }
    void workerIsQuickerThanTheWindow_data()
    {
        QTest::addColumn<bool>("pinLocked");
        QTest::newRow("changed") << false;
        QTest::newRow("unblocked") << true;
    }
    void workerIsQuickerThanTheWindow()
    {
        QFETCH(bool, pinLocked);
        teachCard(pinLocked);
        QVERIFY(showCard("anna"));
        connect(window.get(), pinLocked ? &Window::unblockPinSig : &Window::changePinSig, this, [this] {
            LogCatcher log;
            emit window->loadSsl();
            while (!log.has("SSL loaded"))
                QThread::msleep(1);
        });
        watching = true;
        enterPins(pinLocked);
        QCOMPARE(found.load(), 0);
    }
    void pinIsChangedOrUnblocked_data()
    {
        QTest::addColumn<bool>("pinLocked");
        QTest::addColumn<bool>("right");
        for (const bool pinLocked : { false, true }) {
            for (const bool right : { false, true })
                QTest::addRow("%s, %s", pinLocked ? "unblocked" : "changed", right ? "right" : "wrong")
                    << pinLocked << right;
        }
    }
    void pinIsChangedOrUnblocked()
    {
        QFETCH(bool, pinLocked);
        QFETCH(bool, right);
        teachCard(pinLocked);
        if (!right)
            teachCardOthers();
        QVERIFY(showCard("anna"));
        watching = true;
        enterPins(pinLocked);
        click("bWrocPin");
        QVERIFY(waitForWorker());
        QCOMPARE(found.load(), 0);
    }
};

// A program of its own, for the free() in it.
int main(int argc, char *argv[])
{
    TestHome home;
    QApplication application(argc, argv);
    TestFreedUnwiped test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_freed_unwiped_linux.moc"
