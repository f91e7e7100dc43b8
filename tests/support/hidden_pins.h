#pragma once

#include "support/own_memory.h"
#include "support/pin_flow.h"

// A user of `anna` whose words stand nowhere in memory but where the program puts them; on the pages of Qualified.
class HiddenPins : public PinFlow {
public:
    const HiddenDigits oldPin { "62059384" };
    const HiddenDigits newPin { "83714206" };
    const HiddenDigits hiddenPuk { "18493750" };

    // The card has these words; it is in no reader yet.
    void teachCard(bool pinLocked)
    {
        QVERIFY(world.addReader("Czytnik Alfa"));
        QVERIFY(world.setPin("anna", sim::Qualified, oldPin.bytes()));
        sim::CardState state = *world.cardState("anna");
        state.puk = hiddenPuk.bytes();
        state.pins[sim::Qualified].tries = pinLocked ? 0 : 3;
        QVERIFY(world.setCardState("anna", state));
    }
    // From now on the card has others.
    void teachCardOthers()
    {
        sim::CardState state = *world.cardState("anna");
        state.puk = "00000000";
        state.pins[sim::Qualified].pin = "00000000";
        QVERIFY(world.setCardState("anna", state));
    }
    void typeAll(bool pinLocked) const
    {
        typeHidden(pinLocked ? "lineInsertPuk" : "lineActualPin", pinLocked ? hiddenPuk : oldPin);
        typeHidden(pinLocked ? "lineNewPinPuk" : "lineNewPin", newPin);
        typeHidden(pinLocked ? "lineRepeatPinPuk" : "lineRepeatPin", newPin);
    }
    void send(bool pinLocked) const { click(pinLocked ? "bChangePinPuk" : "bChangePin"); }

private:
    void typeHidden(const char *name, const HiddenDigits &digits) const
    {
        field(name)->setFocus();
        for (int i = 0; i < digits.size(); ++i)
            QTest::keyClick(field(name), digits.at(i));
    }
};
