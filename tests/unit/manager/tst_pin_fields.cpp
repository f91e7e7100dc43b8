#include "pin_fields.h"

#include "gui/secret_text.h"

#include "support/testmain.h"

#include <QClipboard>
#include <QFrame>
#include <QInputMethodEvent>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>
#include <QValidator>

// A field for a PIN takes digits alone, by whatever way they come, and keeps nothing that it was told to forget.
class TestPinFields : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<QLineEdit> line;

private slots:
    void init()
    {
        line = std::make_unique<QLineEdit>();
        line->setEchoMode(QLineEdit::Password);
        admitPin(line.get(), "\\d{4}");
        line->show();
        line->setFocus();
    }

    void typedKeys_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("taken");
        QTest::newRow("digits") << "1234"
                                << "1234";
        QTest::newRow("too short") << "123"
                                   << "123";
        QTest::newRow("too long") << "12345"
                                  << "1234";
        QTest::newRow("letters") << "abcd"
                                 << "";
        QTest::newRow("letters between") << "1a2b"
                                         << "12";
        QTest::newRow("blanks") << "1 2 3 4"
                                << "1234";
        QTest::newRow("signs") << "-1+2"
                               << "12";
        QTest::newRow("full-width digits") << QString::fromUtf8("１２３４") << "";
        QTest::newRow("Arabic digits") << QString::fromUtf8("١٢٣٤") << "";
    }
    void typedKeys()
    {
        QFETCH(QString, typed);
        for (const QChar key : typed) {
            QKeyEvent press(QEvent::KeyPress, 0, Qt::NoModifier, QString(key));
            QCoreApplication::sendEvent(line.get(), &press);
        }
        QTEST(line->text(), "taken");
    }

    // A text that does not fit as a whole is refused as a whole.
    void pastedText_data()
    {
        QTest::addColumn<QString>("pasted");
        QTest::addColumn<QString>("taken");
        QTest::newRow("digits") << "1234"
                                << "1234";
        QTest::newRow("too short") << "12"
                                   << "12";
        QTest::newRow("too long") << "12345"
                                  << "";
        QTest::newRow("blank behind") << "1234 "
                                      << "";
        QTest::newRow("blanks between") << "12 34"
                                        << "";
        QTest::newRow("line end") << "1234\n"
                                  << "";
        QTest::newRow("letters") << "abcd"
                                 << "";
        QTest::newRow("full-width digits") << QString::fromUtf8("１２３４") << "";
        QTest::newRow("zero character") << QString("12") + QChar(0) + "3"
                                        << "";
    }
    void pastedText()
    {
        QFETCH(QString, pasted);
        QApplication::clipboard()->setText(pasted);
        line->paste();
        QTEST(line->text(), "taken");
    }

    void inputMethod_data() { pastedText_data(); }
    void inputMethod()
    {
        QFETCH(QString, pasted);
        QInputMethodEvent event("", {});
        event.setCommitString(pasted);
        QCoreApplication::sendEvent(line.get(), &event);
        QTEST(line->text(), "taken");
    }

    void textBeingComposedIsNoEntryYet()
    {
        QInputMethodEvent event("12", {});
        QCoreApplication::sendEvent(line.get(), &event);
        QCOMPARE(line->text(), QString());
    }

    void nothingCanBeCopiedOut()
    {
        QApplication::clipboard()->clear();
        QTest::keyClicks(line.get(), "1234");
        line->selectAll();
        line->copy();
        line->cut();
        QCOMPARE(QApplication::clipboard()->text(), QString());
    }

    void anotherPatternReplacesTheOneBefore()
    {
        admitPin(line.get(), "\\d{8}");
        QTest::keyClicks(line.get(), "123456789");
        QCOMPARE(line->text(), QString("12345678"));
        QCOMPARE(line->findChildren<QValidator *>().size(), 1);
    }

    void forgottenEntryDoesNotComeBackByUndo()
    {
        QTest::keyClicks(line.get(), "1234");
        forgetSecret(line.get());
        QCOMPARE(line->text(), QString());
        QVERIFY(!line->isUndoAvailable());
        // The toolkit hides the history of a password, yet keeps it; in the open it would show.
        line->setEchoMode(QLineEdit::Normal);
        line->undo();
        QCOMPARE(line->text(), QString());
    }

    void hintKeepsItsStyleAndGetsItsColourBehind_data()
    {
        QTest::addColumn<int>("colour");
        QTest::addColumn<QString>("rule");
        QTest::newRow("error") << int(PinTexts::Colour::Error) << " color:#EA0449;";
        QTest::newRow("neutral") << int(PinTexts::Colour::Neutral) << " color:#2B9EEB;";
        QTest::newRow("any other") << int(PinTexts::Colour::Success) << " color:#2B9EEB;";
    }
    void hintKeepsItsStyleAndGetsItsColourBehind()
    {
        QFETCH(int, colour);
        QFETCH(QString, rule);
        QLabel hint;
        hint.setStyleSheet("font-size: 12px;");
        hint.hide();

        showFieldHint(&hint, PinTexts::Colour(colour), "Podpowiedź");
        showFieldHint(&hint, PinTexts::Colour(colour), "Druga");

        // It grows at each call.
        QCOMPARE(hint.styleSheet(), "font-size: 12px;" + rule + rule);
        QCOMPARE(hint.text(), QString("Druga"));
        QVERIFY(!hint.isHidden());
    }

    void frameOfTheFieldWithTheFocusIsMarked()
    {
        QWidget window;
        QVBoxLayout layout(&window);
        QFrame first, second;
        QLineEdit firstField(&first), secondField(&second), alone(&window);
        for (QFrame *ring : { &first, &second }) {
            ring->setProperty("class", "fieldRing");
            layout.addWidget(ring);
        }

        markFocusInRings(nullptr, &firstField);
        QVERIFY(first.property("FocusInside").toBool());
        markFocusInRings(&firstField, &secondField);
        QVERIFY(!first.property("FocusInside").toBool());
        QVERIFY(second.property("FocusInside").toBool());
        markFocusInRings(&secondField, &alone);
        QVERIFY(!second.property("FocusInside").toBool());
        QVERIFY(!window.property("FocusInside").isValid());
    }

    void markedFrameFollowsItsRuleAtOnce()
    {
        QWidget window;
        window.setStyleSheet("QFrame { color: blue; } QFrame[FocusInside=\"true\"] { color: red; }");
        QFrame ring(&window);
        QLineEdit field(&ring);
        ring.setProperty("class", "fieldRing");
        window.show();
        QCOMPARE(ring.palette().color(QPalette::WindowText), QColor(Qt::blue));

        markFocusInRings(nullptr, &field);
        QCOMPARE(ring.palette().color(QPalette::WindowText), QColor(Qt::red));
        markFocusInRings(&field, nullptr);
        QCOMPARE(ring.palette().color(QPalette::WindowText), QColor(Qt::blue));
    }
};

VELMOR_TEST(TestPinFields)
#include "tst_pin_fields.moc"
