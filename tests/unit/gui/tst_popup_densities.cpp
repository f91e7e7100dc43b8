#include "gui/popup.h"
#include "look/widget_walk.h"
#include "shared.h"
#include "support/testmain.h"
#include "tst_popup_parts.h"

#include "base/settings.h"

#include <QClipboard>
#include <QFontDatabase>
#include <QScreen>

using namespace PopupParts;

namespace {

const QList<int> densities { 72, 80, 84, 96, 120, 144, 168, 192, 240, 288 };

struct Message {
    const char *name;
    QString title;
    QString text;
    QSize size;
    QDialogButtonBox::StandardButtons buttons;
};

const QList<Message> messages {
    { "reader warning", "",
      "Twój czytnik <b></b> nie działa w pełni prawidłowo.<br><b>Niektóre funkcje mogą działać bardzo wolno lub mogą "
      "być "
      "nie wspierane.</b><br><br>Upewnij się, czy masz zainstalowane poprawne sterowniki do obsługi czytnika oraz czy "
      "czytnik spełnia wymagania dla velmor (obsługa Extended APDU).",
      QSize(500, 200), QDialogButtonBox::Ok },
    { "quit refused", "Zamykanie aplikacji", "<br/><nobr>Zakończ najpierw operację na czytniku z pinpadem.</nobr><br/>",
      QSize(), QDialogButtonBox::Close },
    { "question", "", "Jeden<informative>Dwa i trzy", QSize(), QDialogButtonBox::Yes | QDialogButtonBox::No },
    { "many buttons", "", "Jeden", QSize(), QDialogButtonBox::Yes | QDialogButtonBox::No | QDialogButtonBox::Cancel },
    { "path", "", "Nie można zapisać pliku: /home/zaneta/.mozilla/firefox/abcdefgh.default-esr/pkcs11.txt", QSize(),
      QDialogButtonBox::Close },
};

} // namespace

// The dialogs at the densities that the program meets: as seen by it, so after the factor that the toolkit applies.
class TestPopupDensities : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        Shared::loadResources();
        for (const QString &name : QDir(":/fonts").entryList())
            QVERIFY(QFontDatabase::addApplicationFont(":/fonts/" + name) >= 0);
        QApplication::setQuitOnLastWindowClosed(false);
    }

    void nothingIsCut_data()
    {
        QTest::addColumn<QString>("theme");
        QTest::addColumn<int>("message");
        for (const char *theme : { "light", "dark", "highContrast" }) {
            for (int i = 0; i < messages.size(); ++i)
                QTest::addRow("%s, %s", messages[i].name, theme) << theme << i;
        }
    }
    void nothingIsCut()
    {
        QFETCH(QString, theme);
        QFETCH(int, message);
        Settings::instance()->setValue("theme", theme);
        QStringList found;
        shown(messages[message], [&found](Popup &popup) {
            for (int density : densities) {
                popup.guiScale(density);
                settle();
                for (const QString &fault : WidgetWalk::faults(&popup))
                    found << QString("at %1: %2").arg(density).arg(fault);
            }
        });
        QVERIFY2(found.isEmpty(), qPrintable(found.join('\n')));
    }

    void theTitleGrowsWithItsLetters()
    {
        Settings::instance()->setValue("theme", "light");
        Popup popup;
        popup.setMessage("Information", "Jeden", QDialogButtonBox::Ok);
        popup.show(320, 120);
        QCOMPARE(label(popup, "lMainTitle")->height(), 42);

        popup.guiScale(192);

        QCOMPARE(label(popup, "lMainTitle")->height(), 84);
    }

    void aLongPathWrapsAtTheScreen_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<int>("density");
        const QString words = QString("/home/Żaneta Brzęczyszczykiewicz/katalog").repeated(6);
        const QString oneName = "/home/" + QString("w").repeated(400);
        const QString windows = QString("C:\\Users\\katalog").repeated(20);
        for (int density : { 96, 192, 288 }) {
            QTest::addRow("words at %d", density) << words << density;
            QTest::addRow("one name at %d", density) << oneName << density;
            QTest::addRow("backslashes at %d", density) << windows << density;
        }
    }
    void aLongPathWrapsAtTheScreen()
    {
        QFETCH(QString, path);
        QFETCH(int, density);
        const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
        shown({ "", "", "Nie można zapisać pliku: " + path, QSize(), QDialogButtonBox::Close }, [&](Popup &popup) {
            popup.guiScale(density);
            settle();

            // All that the screen leaves beside the shadow.
            QCOMPARE(find<QFrame>(popup, "mainFrame")->width(), screen.width() - 2 * 20);
            QVERIFY2(popup.width() <= screen.width(), qPrintable(QString::number(popup.width())));
            QVERIFY(popup.geometry().left() >= screen.left() && popup.geometry().right() <= screen.right());
            const QStringList found = WidgetWalk::faults(&popup);
            QVERIFY2(found.isEmpty(), qPrintable(found.join('\n')));
            // Nothing of the path is lost.
            QVERIFY(label(popup, "lText")->text().remove(QChar(0x200B)).contains(path));
        });
    }

    // The one who shows it has asked for lines; one of them is a single word.
    void aLongNameWrapsInAWrappedTextToo()
    {
        const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
        Popup popup;
        popup.setMessage("Information", "Nie można zapisać pliku: /home/" + QString("w").repeated(400), {});
        popup.setTextWrap();
        popup.show(300, 100);
        popup.guiScale(144);
        settle();
        QVERIFY2(popup.width() <= screen.width(), qPrintable(QString::number(popup.width())));
    }

    void grownFrameIsAsHighAsItsTextNeeds()
    {
        for (int i : { 0, 1 }) {
            shown(messages[i], [](Popup &popup) {
                popup.guiScale(72);
                settle();
                const QLabel *text = label(popup, "lText");
                QCOMPARE(text->height(),
                         text->wordWrap() ? text->heightForWidth(text->width()) : text->sizeHint().height());
            });
        }
    }
    void grownFrameIsAsHighAsBothTextsNeed()
    {
        const QString text = QString("Jeden dwa trzy ").repeated(20);
        Popup popup;
        popup.setIconMessage(Popup::Warning, text + "<informative>" + text, QDialogButtonBox::Close);
        popup.setTextWrap();
        popup.show(300, 20);
        popup.guiScale(72);
        settle();
        for (const char *name : { "lText", "lInformativeText" }) {
            const QLabel *one = label(popup, name);
            QVERIFY2(one->height() >= one->heightForWidth(one->width()), name);
        }
    }
    void grownFrameIsAsWideAsItsTextNeeds_data()
    {
        QTest::addColumn<int>("icon");
        QTest::newRow("text") << int(Popup::NoIcon);
        QTest::newRow("beside an icon") << int(Popup::Warning);
    }
    void grownFrameIsAsWideAsItsTextNeeds()
    {
        QFETCH(int, icon);
        Popup popup;
        popup.setIconMessage(icon, messages[4].text, QDialogButtonBox::Close);
        popup.show(200, 100);
        popup.guiScale(72);
        settle();
        const QLabel *text = label(popup, "lText");
        QCOMPARE(text->width(), text->minimumSizeHint().width());
    }

    void dialogThatGrowsStaysOnTheScreen_data()
    {
        QTest::addColumn<QPoint>("corner");
        const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
        QTest::newRow("top left") << screen.topLeft();
        QTest::newRow("bottom right") << screen.bottomRight();
    }
    void dialogThatGrowsStaysOnTheScreen()
    {
        QFETCH(QPoint, corner);
        const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
        shown({ "", "", "Usuń kartę z czytnika.", QSize(), QDialogButtonBox::Close }, [&](Popup &popup) {
            QRect place = popup.geometry();
            place.moveCenter(corner);
            popup.setGeometry(place);

            popup.guiScale(144);
            settle();

            QVERIFY2(screen.contains(popup.geometry()),
                     qPrintable(QString("%1, %2").arg(popup.y()).arg(popup.height())));
        });
    }

    // Wider than the screen as a whole, yet no single word of it is.
    void pathThatFitsInALineStaysAsItIs()
    {
        QFont font("Poppins");
        font.setPixelSize(14);
        QString path = "/home/jan/";
        while (QFontMetrics(font).horizontalAdvance("Nie można zapisać pliku: " + path)
               < QGuiApplication::primaryScreen()->availableGeometry().width())
            path += "katalog/";
        shown({ "", "", "Nie można zapisać pliku: " + path, QSize(), QDialogButtonBox::Close }, [&](Popup &popup) {
            QVERIFY(label(popup, "lText")->wordWrap());
            QVERIFY(label(popup, "lText")->text().contains(path));
        });
    }

    // The longest word that stays whole is looked for; the frame's borders are wider than a letter more.
    void aWordThatOnlyTheBordersMakeTooWideIsBroken()
    {
        const int screen = QGuiApplication::primaryScreen()->availableGeometry().width();
        const auto staysWhole = [screen](int letters) {
            bool whole = false;
            shown({ "", "", "/home/" + QString("i").repeated(letters), QSize(), QDialogButtonBox::Close },
                  [&](Popup &popup) {
                      QVERIFY2(popup.width() <= screen, qPrintable(QString::number(popup.width())));
                      whole = !label(popup, "lText")->text().contains(QChar(0x200B));
                  });
            return whole;
        };
        int whole = 1, broken = screen;
        QVERIFY(staysWhole(whole) && !staysWhole(broken));

        while (broken - whole > 1) {
            const int middle = (whole + broken) / 2;
            (staysWhole(middle) ? whole : broken) = middle;
        }
    }

    void textThatFitsIsLeftAsItIs()
    {
        shown({ "", "", "plik /home/jan/a.txt", QSize(), QDialogButtonBox::Close }, [](Popup &popup) {
            QVERIFY(!label(popup, "lText")->wordWrap());
            QVERIFY(!label(popup, "lText")->text().contains(QChar(0x200B)));
        });
    }

    // A path with them in it would be nobody's.
    void copyOfAWrappedPathHasNoBreaks()
    {
        const QString path = "/home/" + QString("w").repeated(400);
        shown({ "", "", "Nie można zapisać pliku: " + path, QSize(), QDialogButtonBox::Close }, [&](Popup &popup) {
            auto *text = label(popup, "lText");
            const QString mark(QChar(0x200B));
            QVERIFY(text->text().contains(mark + QString("w").repeated(10) + mark));
            QTest::keySequence(text, QKeySequence::SelectAll);

            QTest::keySequence(text, QKeySequence::Copy);

            // Windows tells of a copy later.
            QTRY_COMPARE(QGuiApplication::clipboard()->text(), "Nie można zapisać pliku: " + path);
        });
    }

    void copyOfParagraphsHasNoBreaks_data()
    {
        QTest::addColumn<QString>("between");
        QTest::addColumn<QString>("copied");
        QTest::newRow("paragraphs") << "</p><p>"
                                    << "\n";
        QTest::newRow("lines") << "<br>"
                               << "\n";
        QTest::newRow("fixed blank") << "&nbsp;"
                                     << " ";
    }
    void copyOfParagraphsHasNoBreaks()
    {
        QFETCH(QString, between);
        QFETCH(QString, copied);
        const QString path = "/home/" + QString("w").repeated(400);
        shown({ "", "", "Nie można zapisać pliku." + between + path, QSize(), QDialogButtonBox::Close },
              [&](Popup &popup) {
                  auto *text = label(popup, "lText");
                  QVERIFY(text->text().contains(QChar(0x200B)));
                  QTest::keySequence(text, QKeySequence::SelectAll);

                  QTest::keySequence(text, QKeySequence::Copy);

                  QTRY_COMPARE(QGuiApplication::clipboard()->text(), "Nie można zapisać pliku." + copied + path);
              });
    }

    void copyOfAnotherProgramStaysAsItIs()
    {
        const QString other = "a" + QString(QChar(0x200B)) + "b";
        const QString path = "/home/" + QString("w").repeated(400);
        shown({ "", "", path, QSize(), QDialogButtonBox::Close }, [&](Popup &popup) {
            QTest::keySequence(label(popup, "lText"), QKeySequence::SelectAll);

            const QSignalSpy changes(QGuiApplication::clipboard(), &QClipboard::changed);

            QGuiApplication::clipboard()->setText(other);

            QTRY_VERIFY(!changes.isEmpty());
            QCOMPARE(QGuiApplication::clipboard()->text(), other);
        });
    }

private:
    // Each turn lays out what the one before has changed.
    static void settle()
    {
        for (int turn = 0; turn < 4; ++turn)
            QCoreApplication::processEvents();
    }

    static void shown(const Message &message, const std::function<void(Popup &)> &look)
    {
        whenShown([&look](Popup &popup) {
            look(popup);
            popup.done(0);
        });
        Popup::runModal(Popup::Warning, nullptr, message.title, message.text, message.size, message.buttons);
    }
};

VELMOR_TEST(TestPopupDensities)
#include "tst_popup_densities.moc"
