// The PIN pages among the rules of the window.
#include "faults/window_rules.h"

namespace {

int placeOf(const QString &container)
{
    return container == sim::Authentication ? 0 : container == sim::Authorization ? 1 : 2;
}

} // namespace

int WindowRules::triesHere() const
{
    return tries.value(placeOf(container));
}

void WindowRules::choosePin(const QString &name)
{
    container = name;
    if (triesHere() != 0 && triesHere() != 4) {
        enter("pageChangePin", "Zmiana PIN-u", true);
        if (pinPad)
            ask({ Request::Change, reader, container });
    } else if (tries.value(3) == 0) {
        blockedPuk();
    } else {
        unblockPage();
    }
}

void WindowRules::unblockPage()
{
    if (triesHere() != 0 && triesHere() != 4)
        return;
    if (pukIsBlocked()) {
        blockedPuk();
        return;
    }
    const bool first = container == sim::Qualified && shown.words.value(2) == "Nadaj PIN";
    enter("pageUnblockPin", first ? "Nadawanie PIN-u" : "Odblokowanie PIN-u", true);
    padDelayRuns = pukOnPad();
}

void WindowRules::padDelayOver()
{
    padDelayRuns = false;
    if (pukIsBlocked())
        blockedPuk();
    else
        ask({ Request::Unblock, reader, container });
}

void WindowRules::typed()
{
    Request request { shown.page == "pageChangePin" ? Request::Change : Request::Unblock, reader, container, true };
    const bool first = shown.title == "Nadawanie PIN-u";
    shown.loader = request.kind == Request::Change ? "Zmiana PIN-u \n Proszę czekać"
        : first                                    ? "Nadawanie PIN-u \n Proszę czekać"
                                                   : "Odblokowywanie PIN-u \n Proszę czekać";
    ask(request);
}

void WindowRules::blockedPuk()
{
    enter("pageBlockedPuk_2", "Odblokowanie PIN-u ", true);
}

void WindowRules::pinsAre(const WorkerRules::Pins &pins)
{
    shown.words = pins.words;
    tries = pins.tries;
}

void WindowRules::resultPage(const QString &text, const QString &title)
{
    shown.result = text;
    enter("pageCorrectChange", title, true);
}

void WindowRules::changed(int code)
{
    shown.loader.clear();
    static const QMap<int, QString> texts {
        { 0, "PIN został zmieniony" },
        { -1, "Niepoprawna zmiana PIN-u.\nNiepoprawny aktualny PIN" },
        { -6, "Niepoprawna zmiana PIN-u.\nNiepoprawny aktualny PIN" },
        { -8, "Zmiana PIN-u anulowana" },
        { -9, "Podane PINy różnią się" },
        { -11, "Zmiana PIN-u przerwana" },
    };
    if (!texts.contains(code))
        return;
    if ((code == -1 || code == -6) && triesHere() <= 0)
        unblockPage();
    else
        resultPage(texts.value(code), "Zmiana PIN-u");
}

void WindowRules::unblocked(int code)
{
    shown.loader.clear();
    static const QMap<int, QStringList> texts {
        { 0, { "PIN został odblokowany", "PIN został nadany" } },
        { -1, { "Niepoprawne odblokowanie PIN-u.\nNiepoprawny PUK.", "Niepoprawne nadanie PIN-u.\nNiepoprawny PUK." } },
        { -4, { "Niepoprawne odblokowanie PIN-u.\nNiepoprawny PUK.", "Niepoprawne nadanie PIN-u.\nNiepoprawny PUK." } },
        { -8, { "Odblokowanie PIN-u anulowane", "Nadawanie PIN-u anulowane" } },
        { -9, { "Podane PINy różnią się", "Podane PINy różnią się" } },
        { -11,
          { "Odblokowanie PIN-u anulowane",
            "Kontener został aktywowany.\nNadawanie PIN-u przerwane.\nOdblokuj PIN ponownie." } },
    };
    if (!texts.contains(code))
        return;
    if ((code == -1 || code == -4) && pukIsBlocked()) {
        blockedPuk();
        return;
    }
    const bool first = shown.title == "Nadawanie PIN-u";
    resultPage(texts.value(code).at(first), first ? "Nadawanie PIN-u " : "Odblokowanie PIN-u ");
}
