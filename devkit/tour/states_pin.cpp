#include "states.h"

#include <QLineEdit>

// The pages of the PINs: the forms, the keypad, and what each result is told as.
namespace {

void pinpad(sim::SimWorld &world)
{
    world.setPinpad(Tour::reader, true);
}

using Texts = std::initializer_list<std::pair<const char *, const char *>>;

void type(Tour &tour, const Texts &texts)
{
    for (const auto &[field, text] : texts) {
        auto *line = tour.find<QLineEdit>(field);
        line->setFocus(Qt::TabFocusReason);
        line->clear();
        line->insert(text);
    }
}

bool change(Tour &tour)
{
    return tour.open("bChangePinAuthenCert", "pageChangePin");
}

bool changeTyping(Tour &tour)
{
    const bool shown = change(tour);
    type(tour, { { "lineActualPin", "1234" }, { "lineNewPin", "48" } });
    return shown;
}

bool changeComplete(Tour &tour, const char *repeat)
{
    const bool shown = change(tour);
    type(tour, { { "lineActualPin", "1234" }, { "lineNewPin", "4826" }, { "lineRepeatPin", repeat } });
    return shown;
}

bool changeReady(Tour &tour)
{
    const bool shown = changeComplete(tour, "4826");
    tour.find("bChangePin")->setFocus(Qt::TabFocusReason);
    return shown;
}

bool changeDiffers(Tour &tour)
{
    return changeComplete(tour, "4827") && tour.click("bChangePin");
}

bool changeQualified(Tour &tour)
{
    return tour.open("bChangePinQualifiedCert", "pageChangePin");
}

void lastTry(sim::SimWorld &world)
{
    world.setTries("anna", sim::Qualified, 1);
}

bool changeRuns(Tour &tour)
{
    tour.world.block("C_Login");
    return changeComplete(tour, "4826") && tour.click("bChangePin") && tour.waitForPad();
}

template <int code>
bool changeEnds(Tour &tour)
{
    const bool shown = change(tour);
    tour.window->changePinFin(code);
    return shown && tour.waitForPage("pageCorrectChange");
}

bool changeOnPad(Tour &tour)
{
    return change(tour) && tour.waitForPad();
}

bool quitRefused(Tour &tour)
{
    return changeOnPad(tour) && tour.showDialog([&tour] { tour.click("bClose"); });
}

bool puk(Tour &tour)
{
    return tour.open("bChangePinQualifiedCert", "pageUnblockPin");
}

bool pukComplete(Tour &tour, const char *repeat)
{
    const bool shown = puk(tour);
    type(tour, { { "lineInsertPuk", "87654321" }, { "lineNewPinPuk", "48261537" }, { "lineRepeatPinPuk", repeat } });
    return shown;
}

bool pukReady(Tour &tour)
{
    return pukComplete(tour, "48261537");
}

bool pukDiffers(Tour &tour)
{
    return pukComplete(tour, "48261538") && tour.click("bChangePinPuk");
}

template <int code>
bool pukEnds(Tour &tour)
{
    const bool shown = puk(tour);
    tour.window->unblockPinFin(code);
    return shown && tour.waitForPage("pageCorrectChange");
}

bool pukOnPad(Tour &tour)
{
    return puk(tour) && tour.waitForPad();
}

bool pukBlocked(Tour &tour)
{
    return tour.open("bChangePinQualifiedCert", "pageBlockedPuk_2");
}

} // namespace

QVector<State> pinStates()
{
    return {
        { "pin-change", "anna", change },
        { "pin-change-typing", "anna", changeTyping },
        { "pin-change-ready", "anna", changeReady },
        { "pin-change-differs", "anna", changeDiffers },
        { "pin-change-last-try", "anna", changeQualified, lastTry },
        { "pin-change-runs", "anna", changeRuns },
        { "pin-change-done", "anna", changeEnds<0> },
        { "pin-change-wrong", "anna", changeEnds<-6> },
        { "pin-change-cancelled", "anna", changeEnds<-8> },
        { "pin-change-differ", "anna", changeEnds<-9> },
        { "pin-change-aborted", "anna", changeEnds<-11> },
        { "pin-change-pinpad", "anna", changeOnPad, pinpad },
        { "pin-quit-refused", "anna", quitRefused, pinpad },
        { "puk-unblock", "locked-qualified", puk },
        { "puk-unblock-ready", "locked-qualified", pukReady },
        { "puk-unblock-differs", "locked-qualified", pukDiffers },
        { "puk-unblock-done", "locked-qualified", pukEnds<0> },
        { "puk-unblock-wrong", "locked-qualified", pukEnds<-4> },
        { "puk-unblock-cancelled", "locked-qualified", pukEnds<-8> },
        { "puk-unblock-pinpad", "locked-qualified", pukOnPad, pinpad },
        { "puk-first", "first-pin", puk },
        { "puk-first-done", "first-pin", pukEnds<0> },
        { "puk-first-wrong", "first-pin", pukEnds<-4> },
        { "puk-first-aborted", "first-pin", pukEnds<-11> },
        { "puk-first-pinpad", "first-pin", pukOnPad, pinpad },
        { "puk-blocked", "locked-puk", pukBlocked },
    };
}
