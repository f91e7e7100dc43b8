#include "card_table_access.h"
#include "document_links.h"
#include "gui/gui_base.h"
#include "header_drag.h"
#include "home_cards.h"
#include "pin_fields.h"
#include "shared.h"
#include "text_width.h"
#include "tile_shadow.h"

#include "base/settings.h"
#include "support/testmain.h"

#include <QAccessible>
#include <QGraphicsDropShadowEffect>
#include <QLabel>
#include <QLineEdit>
#include <QTableWidget>
#include <QTextBlock>
#include <QTextDocument>
#include <QUrl>

class TestWindowHelpers : public QObject {
    Q_OBJECT

private slots:
    void textIsCutByAverageWidthOnlyWhenItLeavesLessThanTwentyPixels_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("textWidth");
        QTest::addColumn<int>("labelWidth");
        QTest::addColumn<QString>("shown");
        QTest::newRow("fits") << "abcdefghij" << 80 << 100 << "abcdefghij";
        // 10 characters, 81 pixels, room for 80: 80 / 8.1 = 9.87
        QTest::newRow("one pixel too wide") << "abcdefghij" << 81 << 100 << "abcdefghi...";
        QTest::newRow("half") << "abcdefghij" << 160 << 100 << "abcde...";
        QTest::newRow("fractional average") << "abcdefghij" << 105 << 64 << "abcd...";
        QTest::newRow("no room") << "abc" << 30 << 10 << "...";
        QTest::newRow("empty") << "" << 0 << 10 << "";
    }
    void textIsCutByAverageWidthOnlyWhenItLeavesLessThanTwentyPixels()
    {
        QFETCH(QString, text);
        QFETCH(int, textWidth);
        QFETCH(int, labelWidth);
        QTEST(elidedToWidth(text, textWidth, labelWidth), "shown");
    }

    void onlyAPressOnTheHeaderMovesTheWindow_data()
    {
        QTest::addColumn<QPoint>("press");
        QTest::addColumn<bool>("moves");
        // Window 940 by 717, frame 900 by 697: margins 20 and 10.
        QTest::newRow("middle of the header") << QPoint(400, 40) << true;
        QTest::newRow("left of the frame") << QPoint(20, 40) << false;
        QTest::newRow("first column") << QPoint(21, 40) << true;
        QTest::newRow("last column") << QPoint(919, 40) << true;
        QTest::newRow("right of the frame") << QPoint(920, 40) << false;
        QTest::newRow("top row") << QPoint(400, 0) << false;
        QTest::newRow("second row") << QPoint(400, 1) << true;
        QTest::newRow("last row") << QPoint(400, 89) << true;
        QTest::newRow("below") << QPoint(400, 90) << false;
        QTest::newRow("on the pages") << QPoint(400, 300) << false;
    }
    void onlyAPressOnTheHeaderMovesTheWindow()
    {
        QFETCH(QPoint, press);
        QTEST(isOnHeader(press, QSize(940, 717), QSize(900, 697)), "moves");
    }

    void tileHasTheShadowThatIsAskedFor()
    {
        QWidget tile;
        addTileShadow(&tile, 7, 3);

        const auto *shadow = qobject_cast<QGraphicsDropShadowEffect *>(tile.graphicsEffect());
        QVERIFY(shadow);
        QCOMPARE(shadow->blurRadius(), 7.0);
        QCOMPARE(shadow->offset(), QPointF(3, 3));
        QCOMPARE(shadow->color(), QColor(186, 187, 188));
    }
    // On a dark ground a shadow is a smear.
    void onlyTheLightThemeHasShadows()
    {
        Shared::loadResources();
        for (const char *theme : { "dark", "highContrast", "light" }) {
            Settings::instance()->setValue("theme", theme);
            GuiBase::instance()->load();
            QWidget tile;
            addTileShadow(&tile, 7, 3);
            QCOMPARE(tile.graphicsEffect()->isEnabled(), GuiBase::instance()->theme() == "light");
        }
        QCOMPARE(GuiBase::instance()->theme(), QString("light"));
    }

    void marginsAreAbsolute()
    {
        // A frame larger than the window gives the same margins as a smaller one.
        QVERIFY(!isOnHeader(QPoint(20, 40), QSize(860, 677), QSize(900, 697)));
        QVERIFY(isOnHeader(QPoint(21, 40), QSize(860, 677), QSize(900, 697)));
    }

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

    void onlyTheTableOfCardsIsAGroup()
    {
        showCardsToScreenReaders();
        QTableWidget cards, other;
        QLabel label;
        cards.setObjectName("tableCert");
        other.setObjectName("tableOther");
        label.setObjectName("tableCert");
        const auto roleOf = [](QWidget *widget) { return QAccessible::queryAccessibleInterface(widget)->role(); };

        QCOMPARE(roleOf(&cards), QAccessible::Grouping);
        QCOMPARE(roleOf(&other), QAccessible::Table);
        QCOMPARE(roleOf(&label), QAccessible::StaticText);
    }

    void documentLinkHasOneSlashBeforeThePath()
    {
        QCOMPARE(documentLink("/opt/velmor/statics/instrukcja.html", "Instrukcja"),
                 QString("<a href='file:///opt/velmor/statics/instrukcja.html' style='color:#2b9eeb;'>Instrukcja</a>"));
        QCOMPARE(
            documentLink("C:/velmor/Licenses/license.html", "Umowa  Licencyjna"),
            QString("<a href='file:///C:/velmor/Licenses/license.html' style='color:#2b9eeb;'>Umowa  Licencyjna</a>"));
    }

    void documentLinkLeadsIntoAFolderOfAnyName_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("address");
        QTest::newRow("number sign") << "a#b"
                                     << "a%23b";
        QTest::newRow("question mark") << "a?b"
                                       << "a%3Fb";
        QTest::newRow("percent sign") << "100%"
                                      << "100%25";
        QTest::newRow("what looks encoded") << "a%41b"
                                            << "a%2541b";
        QTest::newRow("what looks like a place of the template") << "%2"
                                                                 << "%252";
        QTest::newRow("apostrophe") << "it's"
                                    << "it%27s";
        QTest::newRow("entity") << "R&amp;D"
                                << "R%26amp;D";
        QTest::newRow("markup") << "<b>"
                                << "%3Cb>";
        QTest::newRow("plain") << "Łódź (x86) a.b-c_d~e+f"
                               << "Łódź (x86) a.b-c_d~e+f";
    }
    void documentLinkLeadsIntoAFolderOfAnyName()
    {
        QFETCH(QString, name);
        QFETCH(QString, address);
        const QString path = "/opt/" + name + "/x.html";

        const QString link = documentLink(path, "T");

        QCOMPARE(link, "<a href='file:///opt/" + address + "/x.html' style='color:#2b9eeb;'>T</a>");
        QTextDocument shown;
        shown.setHtml(link);
        QCOMPARE(shown.toPlainText(), QString("T"));
        const QTextCharFormat format = shown.begin().begin().fragment().charFormat();
        QCOMPARE(QUrl(format.anchorHref()).toLocalFile(), path);
    }

    void fieldStylesStartWithTheSameBorder()
    {
        const QString border =
            "border-style: none;\nborder-radius:10px;padding: 10px;font-size: 16px;font-family: Poppins;";
        QLineEdit field;

        setFieldStyle(&field, true);
        QCOMPARE(field.styleSheet(), border + "background: rgba(212, 214, 215, 70%);");

        setFieldStyle(&field, false);
        QCOMPARE(field.styleSheet(), border + "background:rgb(234,4,73,30%); color: rgb(234,4,73);");
    }
};

VELMOR_TEST(TestWindowHelpers)
#include "tst_window_helpers.moc"
