#include "support/pin_answers.h"

// The setting of a PIN with the PUK, locked or first, meets every answer.
class TestWindowPinPukAnswers : public QObject, private PinAnswers {
    Q_OBJECT

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init() { flow = std::make_unique<PinFlow>(); }
    void cleanup() { flow.reset(); }

    void settingOfAnUnblock() { everyAnswerOf("C_InitPIN", unblock()); }
    void settingOfAFirstPin() { everyAnswerOf("C_SetPIN", firstPin()); }
};

VELMOR_TEST(TestWindowPinPukAnswers)
#include "tst_window_pin_puk_answers.moc"
