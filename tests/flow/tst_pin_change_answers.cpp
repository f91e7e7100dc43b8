#include "support/pin_answers.h"

// A change of the PIN meets every answer.
class TestPinChangeAnswers : public QObject, private PinAnswers {
    Q_OBJECT

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init() { flow = std::make_unique<PinFlow>(); }
    void cleanup() { flow.reset(); }

    void allValuesOfTheStandardAreHere() { QVERIFY(answers().size() > 90); }
    void login() { everyAnswerOf("C_Login", atLogin(change())); }
    void setting() { everyAnswerOf("C_SetPIN", change()); }
    void logout() { everyAnswerOf("C_Logout", atLogout(change())); }
};

VELMOR_TEST(TestPinChangeAnswers)
#include "tst_pin_change_answers.moc"
