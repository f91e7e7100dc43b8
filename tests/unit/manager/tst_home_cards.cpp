#include "home_cards.h"

#include "support/testmain.h"

// What the tiles of the home page tell, and when their buttons are on.
class TestHomeCards : public QObject {
    Q_OBJECT

private slots:
    void accessibleTextDropsMarkupAndSpellsTheAbbreviation()
    {
        QCOMPARE(HomeCards::accessibleText("<p>numer <b>kan</b></p>"), QString("numer CAN"));
        QCOMPARE(HomeCards::accessibleText("Kanada, bekan"), QString("Kanada, beCAN"));
        QCOMPARE(
            HomeCards::holderText("CAA100017", "17 października 2033", "Anna Maria", "Wiśniewska"),
            QString("Twoje dane z velmor: zdjęcie seria i numer dowodu: CAA100017 data ważności 17 października 2033 "
                    "imiona: Anna Maria nazwisko: Wiśniewska"));
        QCOMPARE(HomeCards::accessibleText("       Zmień PIN"), QString("       Zmień PIN"));
    }

    void oneQualifiedCertificateIsSpokenInTheSingular_data()
    {
        QTest::addColumn<int>("count");
        QTest::addColumn<QString>("spoken");
        QTest::newRow("0") << 0 << "Certyfikat kwalifikowany masz 0 certyfikaty kwalifikowane";
        QTest::newRow("1") << 1 << "Certyfikat kwalifikowany masz 1 certyfikat kwalifikowany";
        QTest::newRow("2") << 2 << "Certyfikat kwalifikowany masz 2 certyfikaty kwalifikowane";
        QTest::newRow("5") << 5 << "Certyfikat kwalifikowany masz 5 certyfikaty kwalifikowane";
    }

    void oneQualifiedCertificateIsSpokenInTheSingular()
    {
        QFETCH(int, count);
        QTEST(HomeCards::qualifiedCountText(count), "spoken");
    }

    void pinButtonIsOffForAFirstPinAndForAMissingToken_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("enabled");
        QTest::newRow("change") << "       Zmień PIN" << true;
        QTest::newRow("unblock") << "       Odblokuj PIN" << true;
        QTest::newRow("first PIN") << "       Nadaj PIN" << false;
        QTest::newRow("missing token") << "       " << false;
    }

    void pinButtonIsOffForAFirstPinAndForAMissingToken()
    {
        QFETCH(QString, text);
        QTEST(HomeCards::pinButtonEnabled(text), "enabled");
    }
};

VELMOR_TEST(TestHomeCards)
#include "tst_home_cards.moc"
