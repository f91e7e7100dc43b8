#include "pin_fields.h"

#include "support/testmain.h"

#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include <functional>

namespace {

class OnHide : public QObject {
public:
    explicit OnHide(std::function<void()> call) : what(std::move(call)) { }

    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Hide)
            what();
        return false;
    }

private:
    const std::function<void()> what;
};

} // namespace

// The three entries of a PIN page as one form: what they take, when they can be sent, and what they are left like.
class TestPinFieldsForm : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<QWidget> window;
    PinForm form {};

    const PinForm::Rule pukRule { 8, "\\d{8}", "PUK musi mieć 8 cyfr" };
    const PinForm::Rule pinRule { 4, "\\d{4}", "PIN musi mieć 4 cyfry" };

    QList<QLineEdit *> fields() const { return { form.secret, form.fresh, form.repeat }; }
    QList<QLabel *> hints() const { return { form.secretHint, form.freshHint, form.repeatHint }; }
    void enter(const QString &secret, const QString &fresh, const QString &repeat) const
    {
        form.secret->setText(secret);
        form.fresh->setText(fresh);
        form.repeat->setText(repeat);
    }
    QStringList texts() const { return { form.secret->text(), form.fresh->text(), form.repeat->text() }; }
    static QString styleOf(bool good)
    {
        QLineEdit field;
        setFieldStyle(&field, good);
        return field.styleSheet();
    }

private slots:
    void init()
    {
        window = std::make_unique<QWidget>();
        auto *layout = new QVBoxLayout(window.get());
        for (QLineEdit **field : { &form.secret, &form.fresh, &form.repeat })
            layout->addWidget(*field = new QLineEdit);
        for (QLabel **hint : { &form.secretHint, &form.freshHint, &form.repeatHint })
            layout->addWidget(*hint = new QLabel);
        layout->addWidget(form.send = new QPushButton);
        window->show();
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
    }

    void eachEntryTakesItsDigits()
    {
        form.admit(pukRule, pinRule);

        for (QLineEdit *field : fields())
            QTest::keyClicks(field, "a123456789");

        QCOMPARE(texts(), (QStringList { "12345678", "1234", "1234" }));
    }

    void entryThatIsTooShortHasItsHintAndHoldsTheButton_data()
    {
        QTest::addColumn<QString>("entered"); // c: complete, s: too short
        for (const char *entered : { "ccc", "scc", "csc", "ccs", "sss" })
            QTest::newRow(entered) << entered;
    }
    void entryThatIsTooShortHasItsHintAndHoldsTheButton()
    {
        QFETCH(QString, entered);
        const QStringList rules { "PUK musi mieć 8 cyfr", "PIN musi mieć 4 cyfry", "PIN musi mieć 4 cyfry" };
        const auto digits = [&entered](int place, int count) {
            return QString("12345678").left(entered.at(place) == 'c' ? count : count - 1);
        };
        enter(digits(0, 8), digits(1, 4), digits(2, 4));
        // Each way round.
        form.send->setEnabled(entered.contains('s'));
        for (int i = 0; i < 3; ++i)
            hints()[i]->setVisible(entered.at(i) == 'c');

        form.check(pukRule, pinRule);

        QCOMPARE(form.send->isEnabled(), !entered.contains('s'));
        for (int i = 0; i < 3; ++i) {
            QCOMPARE(hints()[i]->isHidden(), entered.at(i) == 'c');
            if (entered.at(i) == 's') {
                QCOMPARE(hints()[i]->text(), rules[i]);
                QCOMPARE(hints()[i]->styleSheet(), QString(" color:#2B9EEB;"));
            }
        }
    }

    void buttonIsOffWhileTheEntriesAreLookedAt()
    {
        enter("12345678", "1234", "1234");
        form.send->setEnabled(true);
        QList<bool> atEachHint;
        OnHide watch([&] { atEachHint << form.send->isEnabled(); });
        for (QLabel *hint : hints()) {
            hint->show();
            hint->installEventFilter(&watch);
        }

        form.check(pukRule, pinRule);

        QCOMPARE(atEachHint, (QList<bool> { false, false, false }));
        QVERIFY(form.send->isEnabled());
    }

    void onlyTheNewPinKeepsItsLookWhileItIsTooShort()
    {
        for (QLineEdit *field : fields())
            setFieldStyle(field, false);

        form.check(pukRule, pinRule);

        QCOMPARE(form.secret->styleSheet(), styleOf(true));
        QCOMPARE(form.fresh->styleSheet(), styleOf(false));
        QCOMPARE(form.repeat->styleSheet(), styleOf(true));
    }

    void repetitionThatDiffersIsMarkedAndGetsTheFocus()
    {
        form.repeatHint->hide();
        form.secret->setFocus();

        form.markRepetition(false);

        QCOMPARE(form.repeat->styleSheet(), styleOf(false));
        QCOMPARE(form.repeatHint->text(), QString("Niepoprawny PIN. Popraw PIN."));
        QVERIFY(form.repeatHint->styleSheet().endsWith(" color:#EA0449;"));
        QVERIFY(!form.repeatHint->isHidden());
        QCOMPARE(form.repeat->accessibleName(), QString("Powtórzony nowy PIN różni się"));
        QVERIFY(form.repeat->hasFocus());
    }

    void repetitionThatMatchesIsOnlyMadeToLookGood()
    {
        form.repeatHint->hide();
        form.secret->setFocus();
        setFieldStyle(form.repeat, false);

        form.markRepetition(true);

        QCOMPARE(form.repeat->styleSheet(), styleOf(true));
        QVERIFY(form.repeatHint->isHidden());
        QCOMPARE(form.repeat->accessibleName(), QString());
        QVERIFY(form.secret->hasFocus());
    }

    void clearedFormIsEmptyAndLooksNew()
    {
        enter("12345678", "1234", "1234");
        for (QLineEdit *field : fields())
            setFieldStyle(field, false);

        form.clear();

        QCOMPARE(texts(), (QStringList { "", "", "" }));
        for (const QLineEdit *field : fields())
            QCOMPARE(field->styleSheet(), styleOf(true));
    }

    void forgottenFormIsEmptyAndLooksAsBefore()
    {
        enter("12345678", "1234", "1234");
        for (QLineEdit *field : fields())
            setFieldStyle(field, false);

        form.forget();

        QCOMPARE(texts(), (QStringList { "", "", "" }));
        for (const QLineEdit *field : fields())
            QCOMPARE(field->styleSheet(), styleOf(false));
    }

    void allHintsGo()
    {
        form.hideHints();
        for (const QLabel *hint : hints())
            QVERIFY(hint->isHidden());
    }

    void resultHasTheColourOnItsFrameAndItsText_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<QColor>("colour");
        QTest::newRow("error") << int(PinTexts::Colour::Error) << QColor("#EA0449");
        QTest::newRow("success") << int(PinTexts::Colour::Success) << QColor("#6EBB6E");
        QTest::newRow("neutral") << int(PinTexts::Colour::Neutral) << QColor("#2B9EEB");
    }
    void resultHasTheColourOnItsFrameAndItsText()
    {
        QFETCH(int, kind);
        QFETCH(QColor, colour);
        QFrame frame;
        frame.setObjectName("pinChangedFrame");
        frame.resize(60, 40);
        QLabel text(&frame), other(&frame);
        text.setObjectName("lPinChanged");
        for (QLabel *label : { &text, &other })
            label->setGeometry(10, 10, 20, 20);

        setResultColour(&frame, PinTexts::Colour(kind));

        const QImage picture = frame.grab().toImage();
        // Its upper edge, two pixels high.
        for (const int y : { 0, 1 })
            QCOMPARE(QColor(picture.pixel(30, y)), colour);
        QVERIFY(QColor(picture.pixel(30, 2)) != colour);
        QVERIFY(frame.styleSheet().contains("background: transparent;"));
        for (QLabel *label : { &text, &other })
            label->ensurePolished();
        QCOMPARE(text.palette().color(QPalette::WindowText), colour);
        QVERIFY(other.palette().color(QPalette::WindowText) != colour);
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

VELMOR_TEST(TestPinFieldsForm)
#include "tst_pin_fields_form.moc"
