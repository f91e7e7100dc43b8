#include "gui/secret_text.h"

#include "support/own_memory.h"
#include "support/testmain.h"

#include <QAccessible>
#include <QDropEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QRegularExpressionValidator>
#include <QSignalSpy>

namespace {

// What a screen reader would be told, one line an event.
QStringList *told = nullptr;
int cursor = -1;

void note(QAccessibleEvent *event)
{
    if (event->type() == QAccessible::TextInserted || event->type() == QAccessible::TextRemoved
        || event->type() == QAccessible::TextUpdated)
        cursor = static_cast<QAccessibleTextCursorEvent *>(event)->cursorPosition();
    if (event->type() == QAccessible::TextInserted) {
        const auto *insertion = static_cast<QAccessibleTextInsertEvent *>(event);
        *told << QString("+%1 %2").arg(insertion->changePosition()).arg(insertion->textInserted());
    } else if (event->type() == QAccessible::TextRemoved) {
        const auto *removal = static_cast<QAccessibleTextRemoveEvent *>(event);
        *told << QString("-%1 %2").arg(removal->changePosition()).arg(removal->textRemoved());
    } else if (event->type() == QAccessible::TextUpdated) {
        const auto *update = static_cast<QAccessibleTextUpdateEvent *>(event);
        *told << QString("%1 %2>%3").arg(update->changePosition()).arg(update->textRemoved(), update->textInserted());
    } else if (event->type() == QAccessible::NameChanged) {
        *told << "name";
    }
}

} // namespace

// Of what is typed into a hidden field a screen reader learns the length, and memory keeps nothing once it is
// forgotten.
class TestSecretText : public QObject {
    Q_OBJECT

private:
    static constexpr std::size_t inText = 2;
    static constexpr std::size_t inHistory = HiddenDigits::editStep;

    QStringList heard;
    QAccessible::UpdateHandler handler = nullptr;
    std::unique_ptr<QLineEdit> line;

    void type(const HiddenDigits &digits) const
    {
        for (int i = 0; i < digits.size(); ++i)
            QTest::keyClick(line.get(), digits.at(i));
    }
    template <typename Event>
    void tell(Event event) const
    {
        handler(&event);
    }
    static QString bullets(int count) { return QString(count, QChar(0x2022)); }

private slots:
    void initTestCase()
    {
        told = &heard;
        // The handler of before is called on, with what may be told. It is asked directly, since a program without a
        // display has no accessibility.
        QAccessible::installUpdateHandler(note);
        tellSecretsAsBullets();
        tellSecretsAsBullets();
        handler = QAccessible::installUpdateHandler(nullptr);

        // Before any field was emptied.
        QLineEdit first;
        first.setEchoMode(QLineEdit::Password);
        tell(QAccessibleTextInsertEvent(&first, 0, "48"));
        QCOMPARE(heard, QStringList { "+0 " + bullets(2) });
    }
    void init()
    {
        line = std::make_unique<QLineEdit>();
        line->setEchoMode(QLineEdit::Password);
        line->setValidator(new QRegularExpressionValidator(QRegularExpression("\\d{8}"), line.get()));
        prepareSecret(line.get());
        line->show();
        line->setFocus();
        heard.clear();
    }

    void changesAreToldAsBullets_data()
    {
        QTest::addColumn<int>("echoMode");
        QTest::newRow("password") << int(QLineEdit::Password);
        QTest::newRow("no echo") << int(QLineEdit::NoEcho);
        QTest::newRow("shown while edited") << int(QLineEdit::PasswordEchoOnEdit);
    }
    void changesAreToldAsBullets()
    {
        QFETCH(int, echoMode);
        line->setEchoMode(QLineEdit::EchoMode(echoMode));
        tell(QAccessibleTextInsertEvent(line.get(), 1, "48"));
        tell(QAccessibleTextRemoveEvent(line.get(), 3, "26153"));
        tell(QAccessibleTextUpdateEvent(line.get(), 0, "482", "615372"));
        QCOMPARE(heard, (QStringList { "+1 " + bullets(2), "-3 " + bullets(5), "0 " + bullets(3) + ">" + bullets(6) }));
    }

    void cursorIsToldWithThem()
    {
        QAccessibleTextInsertEvent insertion(line.get(), 0, "48");
        insertion.setCursorPosition(6);
        handler(&insertion);
        QCOMPARE(cursor, 6);
        QAccessibleTextRemoveEvent removal(line.get(), 0, "48");
        removal.setCursorPosition(7);
        handler(&removal);
        QCOMPARE(cursor, 7);
        QAccessibleTextUpdateEvent update(line.get(), 0, "4", "8");
        update.setCursorPosition(5);
        handler(&update);
        QCOMPARE(cursor, 5);
    }

    void openFieldIsToldAsItIs()
    {
        line->setEchoMode(QLineEdit::Normal);
        tell(QAccessibleTextInsertEvent(line.get(), 0, "12"));
        tell(QAccessibleTextUpdateEvent(line.get(), 0, "12", "3"));
        QCOMPARE(heard, (QStringList { "+0 12", "0 12>3" }));
    }

    void otherThingsAreToldAsTheyAre()
    {
        QLabel label;
        tell(QAccessibleTextInsertEvent(&label, 0, "12"));
        tell(QAccessibleEvent(line.get(), QAccessible::NameChanged));
        QCOMPARE(heard, (QStringList { "+0 12", "name" }));
        // Nobody was put in the place of the handler that the test has taken away.
        QVERIFY(!QAccessible::installUpdateHandler(nullptr));
    }

    void forgottenTextStandsNowhere()
    {
        const HiddenDigits digits { "62059384" };
        type(digits);
        // Not by the text itself: a copy of the test's would be found as well.
        QCOMPARE(line->text().size(), digits.size());
        QVERIFY(digits.places(inText) > 0);
        QVERIFY(digits.places(inHistory) > 0);
        forgetSecret(line.get());
        QCOMPARE(digits.places(inHistory), 0);
        QCOMPARE(line->text(), QString());
#ifdef __SANITIZE_ADDRESS__
        QSKIP("The sanitizer keeps what was freed, and what the toolkit has freed on the way with it");
#endif
        QCOMPARE(digits.places(inText), 0);
    }

    // Deleted by the user, so that the history alone has it.
    void forgottenHistoryStandsNowhere()
    {
        const HiddenDigits digits { "73160495" };
        type(digits);
        for (int i = 0; i < digits.size(); ++i)
            QTest::keyClick(line.get(), Qt::Key_Backspace);
        QCOMPARE(line->text(), QString());
        QVERIFY(digits.places(inHistory) > 0);
        QSignalSpy changed(line.get(), &QLineEdit::textChanged);
        forgetSecret(line.get());
        QCOMPARE(digits.places(inHistory), 0);
        // To whoever looks at it nothing has happened.
        QCOMPARE(changed.size(), 0);
    }

    // Growing would leave it behind where it stood before.
    void typingNeverMovesTheHistory()
    {
        const HiddenDigits digits { "84271506" };
        for (int round = 0; round < 40; ++round) {
            type(digits);
            for (int i = 0; i < digits.size(); ++i)
                QTest::keyClick(line.get(), Qt::Key_Backspace);
        }
        forgetSecret(line.get());
        QCOMPARE(digits.places(inHistory), 0);
        QCOMPARE(digits.places(inText), 0);
    }

    void roomIsMadeByWhateverCanBringAText_data()
    {
        QTest::addColumn<int>("kind");
        QTest::newRow("focus") << int(QEvent::FocusIn);
        QTest::newRow("key") << int(QEvent::KeyPress);
        QTest::newRow("input method") << int(QEvent::InputMethod);
        QTest::newRow("drop") << int(QEvent::Drop);
    }
    void roomIsMadeByWhateverCanBringAText()
    {
        QFETCH(int, kind);
        QLineEdit fresh;
        fresh.setEchoMode(QLineEdit::Password);
        prepareSecret(&fresh);
        QVERIFY(fresh.text().capacity() < 32);
        QFocusEvent focus(QEvent::FocusIn);
        QKeyEvent key(QEvent::KeyPress, Qt::Key_1, Qt::NoModifier, "1");
        QInputMethodEvent composed;
        composed.setCommitString("1");
        QMimeData text;
        text.setText("1");
        QDropEvent drop(QPointF(1, 1), Qt::CopyAction, &text, Qt::LeftButton, Qt::NoModifier);
        if (kind == QEvent::Drop) {
            QDragEnterEvent enter(QPoint(1, 1), Qt::CopyAction, &text, Qt::LeftButton, Qt::NoModifier);
            QCoreApplication::sendEvent(&fresh, &enter);
        }
        const QMap<int, QEvent *> events {
            { QEvent::FocusIn, &focus },
            { QEvent::KeyPress, &key },
            { QEvent::InputMethod, &composed },
            { QEvent::Drop, &drop },
        };

        QCoreApplication::sendEvent(&fresh, events[kind]);

        QCOMPARE(fresh.text(), kind == QEvent::FocusIn ? QString() : QString("1"));
        QVERIFY(fresh.text().capacity() >= 32);
    }

    void whatStandsInAFieldStays()
    {
        QLineEdit fresh;
        prepareSecret(&fresh);
        fresh.setText("12");
        QFocusEvent focus(QEvent::FocusIn);
        QCoreApplication::sendEvent(&fresh, &focus);
        QCOMPARE(fresh.text(), QString("12"));
    }

    void roomIsMadeOnce()
    {
        QLineEdit fresh;
        fresh.setEchoMode(QLineEdit::Password);
        const auto children = fresh.children().size();
        prepareSecret(&fresh);
        QTest::keyClick(&fresh, Qt::Key_1);
        QTest::keyClick(&fresh, Qt::Key_Backspace);

        QTest::keyClick(&fresh, Qt::Key_Shift);

        // The edits are still known, and nothing watches the field any more.
        QVERIFY(fresh.isModified());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCOMPARE(fresh.children().size(), children);
    }

    void otherEventsGoOnToTheField()
    {
        struct Seen : QObject {
            int count = 0;
            bool eventFilter(QObject *, QEvent *event) override
            {
                count += event->type() == QEvent::User;
                return false;
            }
        } seen;
        QLineEdit fresh;
        fresh.installEventFilter(&seen); // asked behind the one that is put on later
        prepareSecret(&fresh);
        QEvent event(QEvent::User);

        QCoreApplication::sendEvent(&fresh, &event);

        QCOMPARE(seen.count, 1);
    }

    void textThatWasNotTypedIsForgottenToo()
    {
        QLineEdit fresh;
        fresh.setText("1");
        forgetSecret(&fresh);
        QCOMPARE(fresh.text(), QString());
    }

    void emptyFieldIsLeftAsItIs()
    {
        QLineEdit fresh;
        forgetSecret(&fresh);
        QVERIFY(fresh.text().capacity() < 32);
    }

    void fieldTakesTheNextEntryAsBefore()
    {
        QTest::keyClicks(line.get(), "48261537");
        QSignalSpy changed(line.get(), &QLineEdit::textChanged);
        QSignalSpy edited(line.get(), &QLineEdit::textEdited);
        forgetSecret(line.get());
        QCOMPARE(changed.size(), 1);
        QCOMPARE(changed.first().first().toString(), QString());
        QCOMPARE(edited.size(), 0);
        QVERIFY(!line->isModified());
        QVERIFY(!line->isUndoAvailable());

        QTest::keyClicks(line.get(), "12x3456789");

        QCOMPARE(line->text(), QString("12345678"));
        QCOMPARE(edited.size(), 8);
    }
};

VELMOR_TEST(TestSecretText)
#include "tst_secret_text.moc"
