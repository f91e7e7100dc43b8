#include "support/pin_answers.h"

// The logins and logouts of an unblock meet every answer.
class TestPinUnblockAnswers : public QObject, private PinAnswers {
    Q_OBJECT

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init() { flow = std::make_unique<PinFlow>(); }
    void cleanup() { flow.reset(); }

    void loginOfAnUnblock() { everyAnswerOf("C_Login", atLogin(unblock())); }
    void logoutOfAnUnblock() { everyAnswerOf("C_Logout", atLogout(unblock())); }
};

VELMOR_TEST(TestPinUnblockAnswers)
#include "tst_pin_unblock_answers.moc"
