#include "base/secret_string.h"
#include "card/card-parser.h"

#include "support/own_memory.h"
#include "support/testmain.h"

#include <utility>
#include <vector>

// What the parser takes apart on its way to a text is overwritten: afterwards the file and the texts are all there is.
class TestCardParserMemory : public QObject {
    Q_OBJECT

private:
    static QString path(const char *name) { return QString(VELMOR_TEST_ROOT "/devkit/cards/anna/%1.bin").arg(name); }
    // Straight into its place, with no buffer between.
    static QByteArray content(const char *name)
    {
        QFile file(path(name));
        if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
            return {};
        QByteArray bytes(int(file.size()), '\0');
        file.read(bytes.data(), bytes.size());
        return bytes;
    }
    static void load(DGParser &parser, const char *name)
    {
        QByteArray source = content(name);
        parser.loadDg(name, source);
        wipeSecret(source);
    }

private slots:
    void initTestCase()
    {
#ifdef __SANITIZE_ADDRESS__
        QSKIP("The sanitizer keeps what was freed, and what the toolkit has freed on the way with it");
#endif
    }

    void onlyFileAndTextAreLeft_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<int>("from");
        QTest::addColumn<int>("count");
        QTest::addColumn<int>("field");
        QTest::newRow("document number") << QByteArray("DG1") << 10 << 9 << 0;
        QTest::newRow("personal number") << QByteArray("DG11") << 13 << 11 << 1;
        QTest::newRow("personal number of DG1") << QByteArray("DG1") << 53 << 11 << 1;
        QTest::newRow("second name") << QByteArray("DG13") << 40 << 5 << 2;
        QTest::newRow("mother") << QByteArray("DG13") << 67 << 8 << 3;
    }
    void onlyFileAndTextAreLeft()
    {
        QFETCH(QByteArray, file);
        QFETCH(int, from);
        QFETCH(int, count);
        QFETCH(int, field);
        const HiddenBytes bytes = HiddenBytes::ofFile(path(file), from, count);
        const HiddenBytes shown = bytes.widened();
        QVERIFY(!bytes.isEmpty());
        QCOMPARE(bytes.places(), 0);
        DGParser parser;
        load(parser, file);
        QCOMPARE(bytes.places(), 1);

        const std::function<QString()> fields[] = { [&] { return parser.documentNumber(); },
                                                    [&] { return parser.personalNumber(); },
                                                    [&] { return parser.secondName(); },
                                                    [&] { return parser.motherName(); } };
        QString text = fields[field]();
        QCOMPARE(text.size(), count);
        QCOMPARE(bytes.places(), 1);
        QCOMPARE(shown.places(), 1);
        wipeSecret(text);
        parser.clearDg();
        QCOMPARE(bytes.places(), 0);
        QCOMPARE(shown.places(), 0);
    }

    // Looked for before anything else is allocated, which would most likely get the block that was just freed.
    void partThatATextIsMadeOfIsOverwritten()
    {
        const HiddenBytes bytes = HiddenBytes::ofFile(path("DG1"), 53, 11);
        DGParser parser;
        load(parser, "DG1");
        std::vector<std::pair<std::uintptr_t, std::uintptr_t>> regions;
        QVERIFY(visitOwnMemory([&](std::uintptr_t from, std::uintptr_t to) { regions.emplace_back(from, to); }));
        int places = 0;

        QString text = parser.personalNumber();
        for (const auto &region : regions)
            places += bytes.placesIn(region.first, region.second);

        QCOMPARE(text.size(), 11);
        QCOMPARE(places, 1);
        wipeSecret(text);
    }

    // A new card's group takes the place of the last one's.
    void fileThatIsReplacedIsOverwritten()
    {
        const HiddenBytes bytes = HiddenBytes::ofFile(path("DG1"), 5, 40);
        DGParser parser;
        load(parser, "DG1");
        QCOMPARE(bytes.places(), 1);
        parser.loadDg("DG1", QByteArray(95, '<'));
        QCOMPARE(bytes.places(), 0);
    }
};

VELMOR_TEST(TestCardParserMemory)
#include "tst_card_parser_memory.moc"
