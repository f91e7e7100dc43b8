#include "gui/popup.h"
#include "shared.h"
#include "support/testmain.h"
#include "tst_popup_parts.h"

#include <QWindow>

using namespace PopupParts;

namespace {

// A window as the popups know it: one with the signal that asks them to go.
class Opener : public QWidget {
    Q_OBJECT

signals:
    void closePopups();
};

int answerTo(Popup &popup, const std::function<void(Popup &)> &act)
{
    whenShown(act);
    const QSize size = popup.contentSize();
    return popup.execAt(size.width(), size.height());
}

} // namespace

// How the dialog runs and ends.
class TestPopupModal : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        Shared::loadResources();
        QApplication::setQuitOnLastWindowClosed(false);
    }

    void dialogThatIsShownAgainHasForgottenItsEnd()
    {
        Popup popup;
        popup.setMessage("Information", "Jeden", QDialogButtonBox::Yes | QDialogButtonBox::No);
        const int first = answerTo(
            popup, [](Popup &shown) { QTest::mouseClick(button(shown, QDialogButtonBox::Yes), Qt::LeftButton); });
        QCOMPARE(first, int(QDialogButtonBox::Yes));

        const int second = answerTo(popup, [](Popup &shown) { QTest::keyClick(&shown, Qt::Key_Escape); });

        QCOMPARE(second, 0);
    }

    void aButtonEndsTheDialogWithItsCode_data()
    {
        QTest::addColumn<int>("code");
        QTest::addColumn<bool>("isClose");
        QTest::newRow("Ok") << int(QDialogButtonBox::Ok) << false;
        QTest::newRow("Yes") << int(QDialogButtonBox::Yes) << false;
        QTest::newRow("No") << int(QDialogButtonBox::No) << false;
        QTest::newRow("Close") << 0x200000 << true;
    }

    void aButtonEndsTheDialogWithItsCode()
    {
        QFETCH(int, code);
        QFETCH(bool, isClose);
        const auto standard = QDialogButtonBox::StandardButton(code);
        Popup popup;
        popup.setMessage("Information", "Jeden", standard | QDialogButtonBox::Help);
        QSignalSpy closed(&popup, &Popup::closeClicked);

        const int result =
            answerTo(popup, [standard](Popup &shown) { QTest::mouseClick(button(shown, standard), Qt::LeftButton); });

        QCOMPARE(result, code);
        QCOMPARE(closed.size(), isClose ? 1 : 0);
        QVERIFY(!popup.isVisible());
    }

    void aCodeEndsTheDialogLikeItsButton()
    {
        Popup popup;
        popup.setMessage("Information", "Jeden", QDialogButtonBox::Ok);
        QSignalSpy closed(&popup, &Popup::closeClicked);

        QCOMPARE(answerTo(popup, [](Popup &shown) { shown.buttonClicked(QDialogButtonBox::Retry); }),
                 int(QDialogButtonBox::Retry));
        QCOMPARE(closed.size(), 0);
        QCOMPARE(answerTo(popup, [](Popup &shown) { shown.buttonClicked(QDialogButtonBox::Close); }), 0x200000);
        QCOMPARE(closed.size(), 1);
    }

    void theCrossCountsAsClose()
    {
        Popup popup;
        popup.setMessage("Information", "Jeden", QDialogButtonBox::Ok);
        QSignalSpy closed(&popup, &Popup::closeClicked);

        const int result = answerTo(
            popup, [](Popup &shown) { QTest::mouseClick(find<QPushButton>(shown, "bClose"), Qt::LeftButton); });

        QCOMPARE(result, 0x200000);
        QCOMPARE(closed.size(), 1);
    }

    void enterPressesTheDefaultAndNeverTheCross()
    {
        Popup popup;
        popup.setMessage("Question", "Jeden", QDialogButtonBox::Yes | QDialogButtonBox::No);

        QCOMPARE(answerTo(popup, [](Popup &shown) { QTest::keyClick(&shown, Qt::Key_Return); }),
                 int(QDialogButtonBox::Yes));

        popup.setButtons(QDialogButtonBox::Yes | QDialogButtonBox::No, QDialogButtonBox::NoButton);
        QVERIFY(!find<QPushButton>(popup, "bClose")->autoDefault());
    }

    void escapeEndsItWithoutAButton()
    {
        QCOMPARE((whenShown([](Popup &shown) { QTest::keyClick(&shown, Qt::Key_Escape); }),
                  Popup::information(nullptr, "", "Jeden", QDialogButtonBox::Ok)),
                 0);
    }

    void theWindowClosesItWithIgnore()
    {
        Opener window;
        Popup popup(&window, "");
        popup.setMessage("Information", "Jeden", QDialogButtonBox::Ok);
        QSignalSpy closed(&popup, &Popup::closeClicked);
        LogCatcher log;

        const int result = answerTo(popup, [&window](Popup &) { emit window.closePopups(); });

        QCOMPARE(result, 0x100000);
        QCOMPARE(closed.size(), 0);
        QVERIFY(log.has("Close popup signal received"));
    }

    void theWindowClosesTheStaticDialogsToo()
    {
        Opener window;
        whenShown([&window](Popup &) { emit window.closePopups(); });

        QCOMPARE(Popup::warning(&window, "", "Jeden", QDialogButtonBox::Close), 0x100000);
    }

    void otherParentsNeedNotHaveTheSignal()
    {
        QWidget window;
        LogCatcher log;

        Popup popup(&window, "");

        QVERIFY2(!log.has("No such signal"), qPrintable(log.text()));
    }

    void staticCallsDifferInTheirIcon_data()
    {
        QTest::addColumn<bool>("warning");
        QTest::addColumn<QString>("cssClass");
        QTest::newRow("information") << false << "Information";
        QTest::newRow("warning") << true << "Warning";
    }

    void staticCallsDifferInTheirIcon()
    {
        QFETCH(bool, warning);
        QString cssClass;
        QString title;
        QString text;
        QWidget *focused = nullptr;
        bool iconShown = false;
        QString focusName;
        whenShown([&](Popup &shown) {
            cssClass = label(shown, "lText")->property("cssClass").toString();
            title = label(shown, "lMainTitle")->text();
            text = label(shown, "lText")->text();
            iconShown = label(shown, "lIcon")->isVisible();
            focused = shown.focusWidget();
            focusName = focused ? focused->objectName() : QString();
            shown.buttonClicked(QDialogButtonBox::Ok);
        });

        const int result =
            (warning ? Popup::warning : Popup::information)(nullptr, "Tytuł", "Jeden", QDialogButtonBox::Ok);

        QCOMPARE(result, int(QDialogButtonBox::Ok));
        QTEST(cssClass, "cssClass");
        QCOMPARE(title, QString("Tytuł"));
        QVERIFY(text.contains("Jeden"));
        QVERIFY(iconShown);
        QCOMPARE(focusName, QString("lText"));
    }

    void otherWindowsAreClosedToClicksMeanwhile()
    {
        QWidget window;
        QPushButton target("x", &window);
        window.setGeometry(0, 0, 50, 50);
        window.show();
        QSignalSpy clicks(&target, &QPushButton::clicked);
        Qt::WindowModality modality = Qt::NonModal;
        whenShown([&](Popup &shown) {
            modality = shown.windowModality();
            QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, QPoint(5, 5));
            shown.buttonClicked(QDialogButtonBox::Ok);
        });

        Popup::information(nullptr, "", "Jeden", QDialogButtonBox::Ok);

        QCOMPARE(modality, Qt::ApplicationModal);
        QCOMPARE(clicks.size(), 0);
        QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, QPoint(5, 5));
        QCOMPARE(clicks.size(), 1);
    }

    void aGivenSizeWrapsTheText()
    {
        bool wraps = false;
        QSize frame;
        whenShown([&](Popup &shown) {
            wraps = label(shown, "lText")->wordWrap();
            frame = find<QWidget>(shown, "mainFrame")->size();
            shown.buttonClicked(QDialogButtonBox::Ok);
        });

        Popup::runModal(Popup::Warning, nullptr, "", QString("Jeden dwa ").repeated(15), QSize(500, 200),
                        QDialogButtonBox::Ok);

        QVERIFY(wraps);
        QCOMPARE(frame, QSize(530, 290));
    }

    void aTextTooLongForTheGivenSizeIsNotCut_data()
    {
        QTest::addColumn<int>("icon");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("buttons");

        const QString text = QString("Jeden dwa trzy ").repeated(60);
        QTest::newRow("text") << int(Popup::NoIcon) << text << 0;
        QTest::newRow("icon and button") << int(Popup::Warning) << text << int(QDialogButtonBox::Ok);
        QTest::newRow("informative") << int(Popup::Warning) << text + "<informative>" + text
                                     << int(QDialogButtonBox::Ok);
    }

    void aTextTooLongForTheGivenSizeIsNotCut()
    {
        QFETCH(int, icon);
        QFETCH(QString, text);
        QFETCH(int, buttons);
        int given = 0;
        int needed = 0;
        int frameWidth = 0;
        whenShown([&](Popup &shown) {
            QCoreApplication::processEvents();
            for (const char *name : { "lText", "lInformativeText" }) {
                const QLabel *one = label(shown, name);
                if (!one->isVisible())
                    continue;
                given += one->height();
                needed += one->heightForWidth(one->width());
            }
            frameWidth = find<QWidget>(shown, "mainFrame")->width();
            shown.closePopup();
        });

        Popup::runModal(Popup::Icon(icon), nullptr, "", text, QSize(300, 100),
                        QDialogButtonBox::StandardButtons(buttons));

        QCOMPARE(frameWidth, 330);
        QCOMPARE(given, needed);
    }

    void severalButtonsHaveRoomBesideEachOther()
    {
        QList<QRect> places;
        QRect room;
        whenShown([&](Popup &shown) {
            QCoreApplication::processEvents();
            const auto *box = find<QDialogButtonBox>(shown, "buttonBox");
            room = box->rect();
            for (const QAbstractButton *one : box->buttons())
                places << one->geometry();
            shown.buttonClicked(QDialogButtonBox::Yes);
        });

        Popup::information(nullptr, "", "?", QDialogButtonBox::Yes | QDialogButtonBox::No | QDialogButtonBox::Cancel);

        QCOMPARE(places.size(), 3);
        for (int i = 0; i < places.size(); ++i) {
            QVERIFY(room.contains(places[i]));
            for (int j = i + 1; j < places.size(); ++j)
                QVERIFY(!places[i].intersects(places[j]));
        }
    }
};

VELMOR_TEST(TestPopupModal)
#include "tst_popup_modal.moc"
