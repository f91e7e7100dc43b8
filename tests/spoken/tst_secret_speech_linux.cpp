#include "gui/secret_text.h"
#include "support/testmain.h"

#include <QAccessible>

// What a screen reader is told of a hidden field while it is worked: its length, and nothing of how it is overwritten.
class TestSecretSpeech : public QObject {
    Q_OBJECT

private:
    static QStringList *told;

    std::unique_ptr<QLineEdit> line;
    QStringList heard;

    static void note(QAccessibleEvent *event)
    {
        if (event->type() == QAccessible::TextInserted) {
            const auto *insertion = static_cast<QAccessibleTextInsertEvent *>(event);
            told->append(QString("+%1 %2").arg(insertion->changePosition()).arg(insertion->textInserted()));
        } else if (event->type() == QAccessible::TextRemoved) {
            const auto *removal = static_cast<QAccessibleTextRemoveEvent *>(event);
            told->append(QString("-%1 %2").arg(removal->changePosition()).arg(removal->textRemoved()));
        } else if (event->type() == QAccessible::TextUpdated) {
            told->append("updated");
        }
    }
    static QString bullets(int count) { return QString(count, QChar(0x2022)); }

private slots:
    void initTestCase()
    {
        QAccessible::setActive(true);
        told = &heard;
        QAccessible::installUpdateHandler(note);
        tellSecretsAsBullets();
    }
    void cleanupTestCase() { QAccessible::installUpdateHandler(nullptr); }

    void init()
    {
        line = std::make_unique<QLineEdit>();
        line->setEchoMode(QLineEdit::Password);
        prepareSecret(line.get());
        heard.clear();
        line->show();
        line->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(line.get()));
        line->setFocus();
        QTRY_VERIFY(line->hasFocus());
    }

    void roomIsMadeSilently() { QCOMPARE(heard, QStringList()); }

    void forgottenTextIsToldAsGone()
    {
        QTest::keyClicks(line.get(), "48");
        heard.clear();

        forgetSecret(line.get());

        QCOMPARE(heard, QStringList { "-0 " + bullets(2) });
    }

    void nextEntryIsToldAgain()
    {
        QTest::keyClicks(line.get(), "48");
        forgetSecret(line.get());
        heard.clear();

        QTest::keyClick(line.get(), Qt::Key_6);

        QVERIFY2(heard.contains("+0 " + bullets(1)), qPrintable(heard.join('\n')));
        QVERIFY2(!heard.join(' ').contains('6'), qPrintable(heard.join('\n')));
    }
};

QStringList *TestSecretSpeech::told = nullptr;

VELMOR_TEST(TestSecretSpeech)
#include "tst_secret_speech_linux.moc"
