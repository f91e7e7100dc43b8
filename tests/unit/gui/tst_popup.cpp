#include "base/settings.h"
#include "gui/anim_widget.h"
#include "gui/gui_base.h"
#include "gui/popup.h"
#include "shared.h"
#include "support/testmain.h"
#include "tst_popup_parts.h"

#include <QFile>
#include <QLayout>
#include <QPainter>
#include <QSvgRenderer>

using namespace PopupParts;

// What the dialog shows.
class TestPopup : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        Shared::loadResources();
        QApplication::setQuitOnLastWindowClosed(false);
    }

    void init() { Settings::instance()->setValue("theme", "light"); }

    void titleFollowsItsRules_data()
    {
        QTest::addColumn<QString>("given");
        QTest::addColumn<QString>("expected");

        QTest::newRow("empty shows the product word") << ""
                                                      << "velmor";
        QTest::newRow("plain") << "Zamykanie aplikacji"
                               << "Zamykanie aplikacji";
        QTest::newRow("product mark") << "O {PRODUCT_NAME}"
                                      << "O velmor";
        QTest::newRow("several marks") << "{PRODUCT_NAME} i {PRODUCT_NAME}"
                                       << "velmor i velmor";
        QTest::newRow("mark in small letters stays") << "{product_name}"
                                                     << "{product_name}";
    }

    void titleFollowsItsRules()
    {
        QFETCH(QString, given);
        QFETCH(QString, expected);

        Popup popup(nullptr, given);
        QCOMPARE(label(popup, "lMainTitle")->text(), expected);
        QCOMPARE(popup.windowTitle(), expected);

        popup.setTitle("x");
        popup.setTitle(given);
        QCOMPARE(label(popup, "lMainTitle")->text(), expected);
    }

    void informativeTextIsWhatFollowsTheMarker_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("informative");

        QTest::newRow("no marker") << "Jeden"
                                   << "Jeden"
                                   << "";
        QTest::newRow("between") << "Jeden<informative>Dwa"
                                 << "Jeden"
                                 << "Dwa";
        QTest::newRow("at the very end") << "Jeden<informative>"
                                         << "Jeden"
                                         << "";
        QTest::newRow("at the start") << "<informative>Dwa"
                                      << ""
                                      << "Dwa";
        QTest::newRow("twice") << "a<informative>b<informative>c"
                               << "a"
                               << "b<informative>c";
        QTest::newRow("empty") << ""
                               << ""
                               << "";
    }

    void informativeTextIsWhatFollowsTheMarker()
    {
        QFETCH(QString, text);
        QFETCH(QString, message);
        QFETCH(QString, informative);
        Popup popup;

        popup.setMessage("Information", text, QDialogButtonBox::Ok);
        popup.show(300, 100);

        QCOMPARE(label(popup, "lText")->text(), "<p style='line-height:18px'>" + message + "</p>");
        QCOMPARE(label(popup, "lInformativeText")->text(), informative);
        QCOMPARE(label(popup, "lInformativeText")->isVisible(), !informative.isEmpty());
    }

    void theNextMessageLosesTheInformativeText()
    {
        Popup popup;
        popup.setMessage("Information", "Jeden<informative>Dwa", QDialogButtonBox::Ok);

        popup.setMessage("Information", "Jeden", QDialogButtonBox::Ok);
        popup.show(300, 100);

        QVERIFY(!label(popup, "lInformativeText")->isVisible());
    }

    void messageIsReadableForEveryone()
    {
        Popup popup;

        popup.setMessage("Warning", "Podaj <b>CAN</b> karty", QDialogButtonBox::Ok);

        QLabel *text = label(popup, "lText");
        QCOMPARE(text->accessibleName(), QString("Podaj kan karty"));
        QCOMPARE(text->textInteractionFlags(), Qt::TextInteractionFlags(Qt::TextSelectableByMouse));
        QCOMPARE(text->focusPolicy(), Qt::TabFocus);
        QCOMPARE(text->minimumWidth(), 170);
        QCOMPARE(text->property("cssClass").toString(), QString("Warning"));
    }

    void iconDecidesPictureAndClass_data()
    {
        QTest::addColumn<int>("icon");
        QTest::addColumn<QString>("cssClass");
        QTest::addColumn<QString>("file");

        QTest::newRow("none") << 0 << "NoIcon"
                              << "";
        QTest::newRow("information") << 1 << "Information"
                                     << ":/images/popup-info.svg";
        QTest::newRow("warning") << 2 << "Warning"
                                 << ":/images/warning.svg";
        QTest::newRow("critical") << 3 << "Critical"
                                  << ":/images/warning.svg";
        QTest::newRow("question") << 4 << "Question"
                                  << ":/images/popup-info.svg";
    }

    void iconDecidesPictureAndClass()
    {
        QFETCH(int, icon);
        QFETCH(QString, file);
        Popup popup;
        const LogCatcher log;

        popup.setIconMessage(icon, "Jeden", QDialogButtonBox::Ok);
        popup.show(300, 100);

        QTEST(label(popup, "lText")->property("cssClass").toString(), "cssClass");
        QVERIFY2(!log.has("Cannot open file"), qPrintable(log.text()));
        QLabel *place = label(popup, "lIcon");
        QCOMPARE(place->isVisible(), !file.isEmpty());
        auto *svg = place->findChild<AnimSvgWidget *>();
        QCOMPARE(svg->renderer()->isValid(), !file.isEmpty());
        QCOMPARE(svg->renderer()->framesPerSecond(), 10);
        if (file.isEmpty())
            return;
        QVERIFY(svg->isVisible());
        QFile picture(file);
        QVERIFY(picture.open(QIODevice::ReadOnly));
        QImage expected(svg->size() * svg->devicePixelRatioF(), QImage::Format_ARGB32_Premultiplied);
        expected.fill(Qt::transparent);
        QPainter painter(&expected);
        QSvgRenderer(picture.readAll()).render(&painter);
        painter.end();
        QImage shown(expected.size(), QImage::Format_ARGB32_Premultiplied);
        shown.fill(Qt::transparent);
        svg->render(&shown, QPoint(), QRegion(), QWidget::RenderFlags());
        QCOMPARE(shown, expected);
    }

    void aSingleButtonIsTheDefaultWhateverItsCode_data()
    {
        QTest::addColumn<int>("code");
        QTest::newRow("Close") << int(QDialogButtonBox::Close);
        QTest::newRow("Ok") << int(QDialogButtonBox::Ok);
        QTest::newRow("Yes") << int(QDialogButtonBox::Yes);
        QTest::newRow("No") << int(QDialogButtonBox::No);
    }

    void aSingleButtonIsTheDefaultWhateverItsCode()
    {
        QFETCH(int, code);
        const auto standard = QDialogButtonBox::StandardButton(code);
        Popup popup;

        popup.setMessage("Warning", "Jeden", standard);

        QVERIFY(button(popup, standard)->isDefault());
        QVERIFY(button(popup, standard)->autoDefault());
        QCOMPARE(button(popup, standard)->cursor().shape(), Qt::PointingHandCursor);
    }

    void ofTwoButtonsOnlyYesIsTheDefault()
    {
        Popup popup;

        popup.setMessage("Question", "Jeden", QDialogButtonBox::Yes | QDialogButtonBox::No);

        QVERIFY(button(popup, QDialogButtonBox::Yes)->isDefault());
        QVERIFY(button(popup, QDialogButtonBox::Yes)->autoDefault());
        QVERIFY(!button(popup, QDialogButtonBox::No)->isDefault());
        QVERIFY(!button(popup, QDialogButtonBox::No)->autoDefault());
    }

    void twoButtonsWithoutYesHaveNoDefault()
    {
        Popup popup;

        popup.setMessage("Question", "Jeden", QDialogButtonBox::Ok | QDialogButtonBox::Cancel);

        QVERIFY(!button(popup, QDialogButtonBox::Ok)->isDefault());
        QVERIFY(!button(popup, QDialogButtonBox::Cancel)->isDefault());
    }

    void theDefaultButtonCanBeChosen()
    {
        Popup popup;

        popup.setButtons(QDialogButtonBox::Yes | QDialogButtonBox::No, QDialogButtonBox::No);

        QVERIFY(button(popup, QDialogButtonBox::No)->isDefault());
        QVERIFY(!button(popup, QDialogButtonBox::Yes)->isDefault());
    }

    void severalButtonsCarryTheTheme_data()
    {
        QTest::addColumn<QString>("setting");
        QTest::addColumn<QString>("theme");
        QTest::newRow("light") << "light"
                               << "light";
        QTest::newRow("dark") << "dark"
                              << "dark";
        QTest::newRow("high contrast") << "highContrast"
                                       << "hc";
    }

    void severalButtonsCarryTheTheme()
    {
        QFETCH(QString, setting);
        QFETCH(QString, theme);
        Settings::instance()->setValue("theme", setting);
        Popup popup;

        popup.setButtons(QDialogButtonBox::Yes | QDialogButtonBox::No, QDialogButtonBox::Yes);

        QCOMPARE(button(popup, QDialogButtonBox::Yes)->property("theme").toString(), theme);
        QCOMPARE(button(popup, QDialogButtonBox::No)->property("theme").toString(), theme);
        QCOMPARE(find<QWidget>(popup, "mainFrame")->styleSheet(), GuiBase::instance()->file("styles-popup.css"));
        QCOMPARE(GuiBase::instance()->theme(), theme);
    }

    void withoutButtonsThereIsNoFooter()
    {
        Popup popup;
        popup.setMessage("Information", "Jeden", QDialogButtonBox::NoButton);

        popup.show(300, 100);

        QVERIFY(!find<QWidget>(popup, "footer")->isVisible());
        popup.setButtons(QDialogButtonBox::Ok, 0);
        popup.show(300, 100);
        QVERIFY(find<QWidget>(popup, "footer")->isVisible());
    }

    void theTitleLetsThePressThrough()
    {
        Popup popup;

        QCOMPARE(label(popup, "lMainTitle")->textInteractionFlags(), Qt::TextInteractionFlags(Qt::NoTextInteraction));
    }

    void theMessageShowsItsRingToWhoMovesByTab()
    {
        Popup popup;
        popup.setMessage("Information", "Jeden", QDialogButtonBox::Ok);
        popup.show(300, 100);
        QVERIFY(QTest::qWaitForWindowActive(&popup));
        find<QPushButton>(popup, "bClose")->setFocus();

        QTest::keyClick(find<QPushButton>(popup, "bClose"), Qt::Key_Tab);
        label(popup, "lText")->setFocus();

        QVERIFY(label(popup, "lText")->hasFocus());
        QVERIFY(label(popup, "lText")->property("KeyFocus").toBool());
    }

    void theCrossShowsThatItCanBePressed()
    {
        Popup popup;

        QCOMPARE(find<QPushButton>(popup, "bClose")->cursor().shape(), Qt::PointingHandCursor);
    }

    void aCustomWidgetStandsInPlaceOfTheMessage()
    {
        Popup popup;
        popup.setIconMessage(Popup::Warning, "Jeden<informative>Dwa", QDialogButtonBox::Ok);
        auto *custom = new QWidget;
        custom->setFixedSize(200, 80);

        popup.setCustomWidget(custom);
        popup.show(200, 80);

        QVERIFY(custom->isVisible());
        for (const char *name : { "lText", "lInformativeText", "lIcon", "footer" })
            QVERIFY2(!find<QWidget>(popup, name)->isVisible(), name);
    }

    void aMessagePutsTheCustomWidgetAway()
    {
        Popup popup;
        auto *custom = new QWidget;
        popup.setCustomWidget(custom);

        popup.setMessage("Information", "Jeden", QDialogButtonBox::Ok);
        popup.show(300, 100);

        QVERIFY(!custom->isVisible());
        QVERIFY(label(popup, "lText")->isVisible());
        QVERIFY(find<QWidget>(popup, "footer")->isVisible());
    }

    void textWrapsOnRequest()
    {
        Popup popup;
        QVERIFY(!label(popup, "lText")->wordWrap());

        popup.setTextWrap();

        QVERIFY(label(popup, "lText")->wordWrap());
    }

    void itsEndIsLogged()
    {
        LogCatcher log;
        {
            Popup popup;
        }
        QCOMPARE(log.count("popup destruct"), 1);
    }
};

VELMOR_TEST(TestPopup)
#include "tst_popup.moc"
