#include "support/flow.h"
#include "support/own_memory.h"

#include "base/crypto_memory.h"

// What the card tells of its holder stands nowhere in the program's memory once the card has gone: neither as it was
// read nor as it was shown.
class TestHolderMemory : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<Flow> flow;

    struct Needle {
        const char *what;
        const char *file;
        HiddenBytes bytes;
        bool shown;

        QString name() const { return QString("%1 of %2").arg(what, file); }
    };
    std::vector<Needle> needles;

    void lookFor(const char *what, const char *file, qint64 from, int count, bool wide = false)
    {
        const HiddenBytes bytes =
            HiddenBytes::ofFile(QString(VELMOR_TEST_ROOT "/devkit/cards/anna/") + file, from, count);
        QVERIFY2(!bytes.isEmpty(), file);
        needles.push_back({ what, file, wide ? bytes.widened() : bytes, wide });
    }

private slots:
    void initTestCase()
    {
#ifdef __SANITIZE_ADDRESS__
        QSKIP("The sanitizer keeps what was freed, and what the toolkit has freed on the way with it");
#endif
        QVERIFY(cleanseCryptoMemory());
        Flow::setUpApplication();
        lookFor("document", "DG1.bin", 5, 40);
        lookFor("personal number", "DG11.bin", 8, 30);
        lookFor("names", "DG13.bin", 20, 50);
        lookFor("photo, begin", "DG2.bin", 200, 64);
        lookFor("photo, end", "DG2.bin", 13000, 64);
        for (const char *file :
             { "authentication-1.der", "authorization-1.der", "presence-1.der", "qualified-1.der" }) {
            lookFor("certificate, begin", file, 40, 64);
            lookFor("certificate, end", file, 440, 64);
        }
        lookFor("shown document number", "DG1.bin", 10, 9, true);
        lookFor("shown personal number", "DG11.bin", 13, 11, true);
        lookFor("shown name of the mother", "DG13.bin", 67, 8, true);
    }
    void init()
    {
        flow = std::make_unique<Flow>();
    }
    void cleanup()
    {
        flow.reset();
    }

    void goesWithTheCard()
    {
        QVERIFY(flow->showCard("anna"));
        for (const char *button : { "bArrowICAO", "bWroc", "bArrowQualifiedCert", "bWroc" })
            flow->click(button);
        for (const Needle &needle : needles)
            QVERIFY2(needle.bytes.places() > 0, qPrintable(needle.name()));

        flow->window->loadedReaders({}, "NO_CARD");

        // At once: what is freed is soon in use for something else, and then this would tell nothing.
        for (const Needle &needle : needles) {
            if (needle.shown)
                QVERIFY2(needle.bytes.places() == 0, qPrintable(needle.name()));
        }
        // What the toolkit deletes later, and what the queue carries still.
        for (const Needle &needle : needles)
            QTRY_VERIFY2(needle.bytes.places() == 0, qPrintable(needle.name()));
    }

    // Asked for while the card was there, answered when nobody wants it any more.
    void goesWithAnAnswerThatComesTooLate()
    {
        const QString reader = "Czytnik Beta";
        QVERIFY(flow->showCard("anna", reader.toStdString()));
        flow->window->loadedReaders({}, "NO_CARD");
        const auto searches = [this] { return flow->world.trace("C_FindObjectsFinal").size(); };
        const auto before = searches();

        emit flow->window->getConteinersAndICAO(reader);
        emit flow->window->getCerts(reader, true, true, true, true);
        emit flow->window->getPhoto(reader);

        constexpr int asked = 6; // data groups, four containers, the photo
        QTRY_COMPARE(searches(), before + asked);
        for (const Needle &needle : needles)
            QTRY_VERIFY2(needle.bytes.places() == 0, qPrintable(needle.name()));
    }
};

VELMOR_TEST(TestHolderMemory)
#include "tst_holder_memory.moc"
