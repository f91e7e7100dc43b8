#include "faults/actions.h"

#include "platform/os.h"
#include "support/profile_folder.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QTest>

namespace {

constexpr char puk[] = "87654321";
constexpr char browserSwitch[] = "security.osclientcerts.autoload\", ";

struct PinRow {
    const char *container;
    const char *button;
    const char *pin;
    const char *newPin;
};

const PinRow &rowOf(const std::string &container)
{
    static const PinRow rows[] = {
        { sim::Authentication, "bChangePinAuthenCert", "1234", "4826" },
        { sim::Authorization, "bChangePinAuthorCert", "123456", "482615" },
        { sim::Qualified, "bChangePinQualifiedCert", "12345678", "48261537" },
    };
    return container == sim::Authentication ? rows[0] : container == sim::Authorization ? rows[1] : rows[2];
}

void choosePin(Rig &rig, const std::string &container)
{
    rig.happenByClick([container](WindowRules &rules) { rules.choosePin(QString::fromStdString(container)); },
                      rowOf(container).button);
}

void type(Rig &rig, const std::vector<std::pair<const char *, QString>> &entries)
{
    for (const auto &entry : entries) {
        auto *field = rig.find<QLineEdit>(entry.first);
        field->setFocus();
        QTest::keyClicks(field, entry.second);
    }
}

// Pressed twice: nothing is sent the second time.
void send(Rig &rig, const char *button)
{
    auto *widget = rig.find<QAbstractButton>(button);
    rig.happenByClick([](WindowRules &rules) { rules.typed(); }, button);
    widget->click();
}

QString pinOnTheCard(Rig &rig, const std::string &card, const std::string &container)
{
    const auto state = rig.world.cardState(card);
    return state ? QString::fromStdString(state->pins.at(container).pin) : QString();
}

Action pinAction(const char *name, const char *card, const std::string &container, Action::Secret secret)
{
    Action action { name, Action::CardShown, card };
    action.container = container;
    action.secret = secret;
    action.entries = 1;
    return action;
}

void expectNewPin(Action &action, const QString &result)
{
    action.achieved = [card = action.card, container = action.container, result](Rig &rig) {
        const QString pin = pinOnTheCard(rig, card, container);
        return rig.rules.shown.result == result && pin == rowOf(container).newPin ? QString()
                                                                                  : "the new PIN is not set";
    };
}

Action change(const char *name, const char *card, const std::string &container, const char *actual = nullptr)
{
    Action action = pinAction(name, card, container, Action::Pin);
    const PinRow &row = rowOf(container);
    action.begin = [row, container, actual](Rig &rig) {
        choosePin(rig, container);
        type(rig,
             { { "lineActualPin", actual ? actual : row.pin },
               { "lineNewPin", row.newPin },
               { "lineRepeatPin", row.newPin } });
    };
    action.act = [](Rig &rig) { send(rig, "bChangePin"); };
    if (!actual)
        expectNewPin(action, "PIN został zmieniony");
    return action;
}

Action withPuk(const char *name, const char *card, const std::string &container, const char *result,
               const char *given = puk)
{
    Action action = pinAction(name, card, container, Action::Puk);
    const PinRow &row = rowOf(container);
    action.begin = [row, container, given](Rig &rig) {
        choosePin(rig, container);
        type(rig, { { "lineInsertPuk", given }, { "lineNewPinPuk", row.newPin }, { "lineRepeatPinPuk", row.newPin } });
    };
    action.act = [](Rig &rig) { send(rig, "bChangePinPuk"); };
    if (result)
        expectNewPin(action, result);
    return action;
}

// What comes behind is for whoever asks once more than the user answers.
void cancelFurther(Rig &rig)
{
    sim::PadAnswer cancel;
    cancel.kind = sim::PadAnswer::Kind::Cancel;
    for (int i = 0; i < 4; ++i)
        rig.world.pad(cancel);
}

Action onPad(const char *name, const char *card, const std::string &container, const char *result)
{
    const bool byPuk = std::string(card) != "anna";
    Action action = pinAction(name, card, container, byPuk ? Action::Puk : Action::Pin);
    action.pinpad = true;
    const PinRow &row = rowOf(container);
    const bool firstUse = std::string(card) == "first-pin";
    action.prepare = [row, byPuk, firstUse](Rig &rig) {
        if (!byPuk)
            rig.world.padChange(row.pin, row.newPin);
        else if (firstUse)
            rig.world.padFirstPin(puk, row.newPin);
        else
            rig.world.padUnblock(puk, row.newPin);
        cancelFurther(rig);
    };
    action.begin = [](Rig &) {};
    action.act = [container, byPuk](Rig &rig) {
        choosePin(rig, container);
        // The keypad is asked for the PUK a second after the page has come.
        if (byPuk)
            rig.waitForRequest();
    };
    expectNewPin(action, result);
    return action;
}

// On the way through a page while the photo is still on its way: the one time in which a page is open and the library
// is called. The read is held before the photo's last search until the page is there.
Action whilePhotoComes(const char *name, const std::function<void(Rig &)> &go)
{
    Action action { name, Action::NoCard, "anna" };
    action.begin = [](Rig &rig) {
        rig.world.block("C_FindObjectsInit", sim::Emrtd, 2);
        rig.putCard("anna");
        rig.tellReaders();
        rig.waitForBlock();
        rig.runUntil([&rig] { return !rig.loaderShown(); });
    };
    action.act = [go](Rig &rig) {
        go(rig);
        rig.world.release();
    };
    return action;
}

void openCertificates(Rig &rig, const char *container, const char *arrow)
{
    rig.happenByClick([container](WindowRules &rules) { rules.certificates(container); }, arrow);
}

// Firefox's box as asked for, and the button; the result comes after half a second.
void changeBrowser(Rig &rig, bool connected)
{
    const ProfileFolder profile(Os().profilesRoot("Firefox") + "a.default", "128.0");
    profile.put("user.js", connected ? "" : "user_pref(\"security.osclientcerts.autoload\", true);\r\n");
    rig.happenByClick([](WindowRules &rules) { rules.settings(); }, "bSettings");
    QCoreApplication::processEvents();
    rig.find<QCheckBox>("Firefox")->setChecked(connected);
    rig.happenByClick([](WindowRules &rules) { rules.shown.page = "pageIntegration"; }, "bIntegrate");
}

Action browsers(const char *name, bool connected)
{
    Action action = whilePhotoComes(name, [connected](Rig &rig) {
        changeBrowser(rig, connected);
        rig.world.release();
        rig.runUntil([&rig] { return rig.page() == "pageIntegration"; });
    });
    action.achieved = [connected](Rig &) {
        const ProfileFolder profile(Os().profilesRoot("Firefox") + "a.default");
        const QByteArray wanted = QByteArray(browserSwitch) + (connected ? "true" : "false");
        return profile.content("user.js").contains(wanted) ? QString() : "the browser was not changed";
    };
    return action;
}

QString shownWhole(Rig &rig, const QString &surname)
{
    const Shown &shown = rig.rules.shown;
    const bool whole = shown.page == "pageHome" && shown.arrow && shown.photo && shown.surname == surname;
    return whole ? QString() : "the card is not shown whole";
}

std::vector<Action> cardActions()
{
    std::vector<Action> list;
    Action start { "start", Action::NewWindow, "anna" };
    start.begin = [](Rig &rig) { rig.putCard("anna"); };
    start.act = [](Rig &rig) {
        rig.openWindow();
        rig.tellReaders();
        rig.happenByClick([](WindowRules &rules) { rules.back(); }, "bWroc");
    };
    start.achieved = [](Rig &rig) { return shownWhole(rig, "Wiśniewska"); };
    list.push_back(start);

    Action on { "card on", Action::NoCard, "anna" };
    on.begin = [](Rig &rig) { rig.putCard("anna"); };
    on.act = [](Rig &rig) { rig.tellReaders(); };
    list.push_back(on);

    Action other { "other reader", Action::CardShown, "jan" };
    other.reader = Rig::otherReader;
    other.begin = [](Rig &rig) {
        rig.putCard("anna", false, Rig::otherReader);
        rig.tellReaders();
        rig.settle();
    };
    other.act = [](Rig &rig) {
        rig.happen([](WindowRules &rules) { rules.chooseReader(Rig::otherReader); },
                   [&rig] {
                       rig.find<QComboBox>("cbReaders")->setCurrentIndex(1);
                       rig.window->selectReader();
                   });
    };
    list.push_back(other);

    Action off { "card off", Action::CardShown, "anna" };
    off.begin = [](Rig &rig) { rig.takeCard(); };
    off.act = [](Rig &rig) { rig.tellReaders(); };
    list.push_back(off);
    return list;
}

std::vector<Action> pageActions()
{
    std::vector<Action> list;
    Action all { "all data", Action::CardShown, "anna" };
    all.begin = [](Rig &) {};
    all.act = [](Rig &rig) { rig.happenByClick([](WindowRules &rules) { rules.allData(); }, "bArrowICAO"); };
    list.push_back(all);
    list.push_back(whilePhotoComes("photo", [](Rig &) {}));
    const struct {
        const char *name;
        const char *container;
        const char *arrow;
    } pages[] = {
        { "certificates of Authentication", sim::Authentication, "bArrowAuthenCert" },
        { "certificates of Authorization", sim::Authorization, "bArrowAuthorCert" },
        { "certificates of Presence", sim::Presence, "bArrowPresenceCert" },
        { "certificates of Qualified", sim::Qualified, "bArrowQualifiedCert" },
    };
    for (const auto &page : pages)
        list.push_back(
            whilePhotoComes(page.name, [page](Rig &rig) { openCertificates(rig, page.container, page.arrow); }));
    list.push_back(browsers("connect", true));
    list.push_back(browsers("disconnect", false));
    list.push_back(whilePhotoComes(
        "report", [](Rig &rig) { rig.happenByClick([](WindowRules &rules) { rules.help(); }, "bHelp"); }));
    return list;
}

std::vector<Action> pinActions()
{
    std::vector<Action> list {
        change("change", "anna", sim::Authentication),
        change("change, wrong PIN", "anna", sim::Authorization, "654321"),
        change("change, last try", "anna", sim::Qualified, "87654321"),
        withPuk("unblock", "locked-authorization", sim::Authorization, "PIN został odblokowany"),
        withPuk("unblock, wrong PUK", "locked-qualified", sim::Qualified, nullptr, "12345678"),
        withPuk("unblock, last try", "locked-authentication", sim::Authentication, nullptr, "12345678"),
        withPuk("first PIN, first use", "first-pin", sim::Qualified, "PIN został nadany"),
        withPuk("first PIN, officer", "not-initialized", sim::Qualified, "PIN został nadany"),
        onPad("change on the pad", "anna", sim::Authentication, "PIN został zmieniony"),
        onPad("unblock on the pad", "locked-authorization", sim::Authorization, "PIN został odblokowany"),
        onPad("first use on the pad", "first-pin", sim::Qualified, "PIN został nadany"),
        onPad("officer on the pad", "not-initialized", sim::Qualified, "PIN został nadany")
    };
    for (Action &action : list) {
        if (action.name == "change, last try")
            action.prepare = [](Rig &rig) { rig.world.setTries("anna", sim::Qualified, 1); };
        if (action.name == "unblock, last try")
            action.prepare = [](Rig &rig) { rig.world.setPukTries("locked-authentication", 1); };
    }
    return list;
}

bool isAFifthThatBlocks(const FaultKind &kind, int call)
{
    return kind.nature == FaultKind::Blocks && call % 5 == 1;
}

std::vector<Action> ends()
{
    Action quit { "quit", Action::CardShown, "anna" };
    quit.quits = quit.endsTheProcess = true;
    quit.begin = [](Rig &) {};
    quit.act = [](Rig &) {};

    // While a call does not come back.
    Action inRead { "quit in a read", Action::NoCard, "anna" };
    inRead.quits = true;
    inRead.takes = isAFifthThatBlocks;
    inRead.begin = [](Rig &rig) { rig.putCard("anna"); };
    inRead.act = [](Rig &rig) {
        rig.tellReaders();
        rig.waitForBlock();
    };
    return { quit, inRead };
}

} // namespace

const std::vector<Action> &actions()
{
    static const std::vector<Action> all = [] {
        std::vector<Action> list = cardActions();
        for (const auto &more : { pageActions(), pinActions(), ends() })
            list.insert(list.end(), more.begin(), more.end());
        return list;
    }();
    return all;
}

const Action *actionOf(const QString &name)
{
    for (const Action &action : actions()) {
        if (action.name == name)
            return &action;
    }
    return nullptr;
}

void showCard(Rig &rig, const std::string &card, bool pinpad)
{
    rig.putCard(card, pinpad);
    rig.tellReaders();
    // The pages that need no card are left by the user alone.
    if (rig.page() == "pageSettings" || rig.page() == "pageHelp")
        rig.happenByClick([](WindowRules &rules) { rules.back(); }, "bWroc");
}
