#include "card_in_reader.h"

#include "support/testmain.h"

// What follows from the facts of a card, without a window.
class TestCardInReader : public QObject {
    Q_OBJECT

private slots:
    void pukIsBlockedWithoutTriesAndWithoutAPuk_data()
    {
        QTest::addColumn<int>("tries");
        QTest::addColumn<bool>("blocked");
        QTest::newRow("locked") << 0 << true;
        QTest::newRow("last try") << 1 << false;
        QTest::newRow("two tries") << 2 << false;
        QTest::newRow("three tries") << 3 << false;
        QTest::newRow("not set") << 4 << true;
    }
    void pukIsBlockedWithoutTriesAndWithoutAPuk()
    {
        QFETCH(int, tries);
        CardInReader card;
        card.pukTries = tries;

        QTEST(card.pukIsBlocked(), "blocked");
    }

    void chipAndTriesDecideWhetherThePukGoesThroughThePad_data()
    {
        QTest::addColumn<bool>("pinPad");
        QTest::addColumn<int>("chip");
        QTest::addColumn<int>("tries");
        QTest::addColumn<bool>("throughPad");
        for (const int chip : { 0, 2, 4, 8, 16 }) {
            for (const int tries : { 0, 1, 2, 3, 4 }) {
                const QByteArray name = "chip " + QByteArray::number(chip) + ", tries " + QByteArray::number(tries);
                // Never with 16, and with 4 not on the last try.
                QTest::newRow("keypad, " + name) << true << chip << tries << !(chip == 16 || (chip == 4 && tries == 1));
                QTest::newRow("no keypad, " + name) << false << chip << tries << false;
            }
        }
    }
    void chipAndTriesDecideWhetherThePukGoesThroughThePad()
    {
        QFETCH(bool, pinPad);
        QFETCH(int, chip);
        QFETCH(int, tries);
        CardInReader card;
        card.pinPad = pinPad;
        card.chip = chip;
        card.pukTries = tries;

        QTEST(card.pukGoesThroughPad(), "throughPad");
    }

    void firstPinIsOfferedForQualifiedAlone_data()
    {
        QTest::addColumn<QString>("conteiner");
        QTest::addColumn<QString>("word");
        QTest::addColumn<bool>("offered");
        for (const char *name : { "Authentication", "Authorization", "Presence", "Qualified", "" }) {
            const bool qualified = !qstrcmp(name, "Qualified");
            QTest::newRow(qPrintable(QString(name) + ", first")) << name << "Nadaj PIN" << qualified;
            QTest::newRow(qPrintable(QString(name) + ", first with blanks")) << name << "  Nadaj PIN " << qualified;
            QTest::newRow(qPrintable(QString(name) + ", change")) << name << "Zmień PIN" << false;
            QTest::newRow(qPrintable(QString(name) + ", unblock")) << name << "Odblokuj PIN" << false;
            QTest::newRow(qPrintable(QString(name) + ", no token")) << name << "" << false;
        }
    }
    void firstPinIsOfferedForQualifiedAlone()
    {
        QFETCH(QString, conteiner);
        QFETCH(QString, word);
        CardInReader card;
        card.words[conteiner] = word;

        QTEST(card.firstPinIsOffered(conteiner), "offered");
    }

    void wordOfAnotherContainerOffersNoFirstPin()
    {
        CardInReader card;
        card.words["Authentication"] = "Nadaj PIN";

        QVERIFY(!card.firstPinIsOffered("Qualified"));
    }

    void containerThatIsNotToldHasNoTries()
    {
        CardInReader card;
        card.tries["Authentication"] = 2;

        QCOMPARE(card.triesOf("Authentication"), 2);
        QCOMPARE(card.triesOf("Presence"), 0);
    }

    void holderGoesAndThePinStatesStay()
    {
        CardInReader card;
        card.certs.setCounts(1, 1, 1, 2);
        card.certs.setCerts(CertStore::Authentication, "der");
        card.data.loadDg("DG1", QByteArray(95, 'A'));
        card.photo = QImage(2, 2, QImage::Format_RGB32);
        card.tries["Qualified"] = 1;
        card.words["Qualified"] = "Zmień PIN";
        card.pukTries = 3;
        card.pinPad = true;
        card.chip = 8;

        card.forgetHolder();

        QVERIFY(!card.certs.hasContainer(CertStore::Authentication));
        QVERIFY(card.certs.certs(CertStore::Authentication).isEmpty());
        QCOMPARE(card.certs.qualifiedCount(), 0);
        QCOMPARE(card.data.documentNumber(), QString());
        QVERIFY(card.photo.isNull());
        QCOMPARE(card.triesOf("Qualified"), 1);
        QCOMPARE(card.words.value("Qualified"), QString("Zmień PIN"));
        QCOMPARE(card.pukTries, 3);
        QVERIFY(card.pinPad);
        QCOMPARE(card.chip, 8);
    }

    // The picture stands in a buffer of the test, so that it can be looked at afterwards.
    void photoIsOverwrittenUnlessSomebodyElseHasItToo_data()
    {
        QTest::addColumn<bool>("shared");
        QTest::newRow("the last to hold it") << false;
        QTest::newRow("shown elsewhere") << true;
    }
    void photoIsOverwrittenUnlessSomebodyElseHasItToo()
    {
        QFETCH(bool, shared);
        constexpr int side = 2;
        QVector<QRgb> pixels(side * side, qRgb(10, 20, 30));
        CardInReader card;
        card.photo = QImage(reinterpret_cast<uchar *>(pixels.data()), side, side, QImage::Format_ARGB32);
        const QImage other = shared ? card.photo : QImage();

        card.forgetHolder();

        QVERIFY(card.photo.isNull());
        QCOMPARE(pixels, QVector<QRgb>(side * side, shared ? qRgb(10, 20, 30) : QRgb(0)));
    }
};

VELMOR_TEST(TestCardInReader)
#include "tst_card_in_reader.moc"
