#include "card/card_results.h"
#include "card/card_tables.h"
#include "card/pkcs11.h"
#include "fuzz/fuzz_home.h"
#include "fuzz/fuzz_target.h"
#include "reader_list.h"
#include "support/scripted_pkcs11/scripted_card.h"

// From what the card library tells of its slots to the list of readers and what it makes the window do. An input has
// five parts: the slots, the slots when they are listed again, the reader that is chosen, the text of a list as the
// Monitor sends it, and that of the box of readers.
namespace {

using Fuzz::require;

constexpr int mostSlots = 64;
constexpr CK_SLOT_ID noSlot = 0xFFFFFFFF;
constexpr unsigned long withCard = 1;
constexpr unsigned long notRead = 0x100;
constexpr unsigned long initialized = 0x400;
constexpr unsigned long waitsForCan = 0x80;

// A line a slot, fields parted by tabs: id, flags, answer of C_GetTokenInfo, flags of the token, answer of
// C_GetSlotInfo, all hexadecimal, description and label. Or "fail", a function and its answer.
void takeSlots(ScriptedCard &card, const QByteArray &text)
{
    card.card.clear();
    card.heal();
    for (const QByteArray &line : text.split('\n')) {
        const QList<QByteArray> fields = line.split('\t');
        if (fields.size() == 3 && fields[0] == "fail") {
            card.fail(QString::fromLatin1(fields[1]), fields[2].toULong(nullptr, 16));
            continue;
        }
        if (fields.size() < 7 || card.card.size() >= mostSlots)
            continue;
        ScriptedSlot slot;
        slot.id = fields[0].toUInt(nullptr, 16);
        slot.flags = fields[1].toUInt(nullptr, 16);
        slot.tokenInfo = fields[2].toULong(nullptr, 16);
        slot.tokenFlags = fields[3].toUInt(nullptr, 16);
        slot.slotInfo = fields[4].toULong(nullptr, 16);
        slot.description = fields[5];
        slot.label = fields[6];
        card.card.push_back(slot);
    }
}

QString field(const QByteArray &bytes, int size)
{
    const QByteArray raw = bytes.leftJustified(size, ' ', true);
    QString text = QString::fromUtf8(raw.constData(), raw.size());
    while (!text.isEmpty() && text.back().isSpace())
        text.chop(1);
    return text;
}

struct SeenSlot {
    QString name; // whole
    QString reader;
    QString label;
    unsigned long flags;
    unsigned long tokenFlags;
    bool token;
};

// As the rules have it, read from the list itself. The library answers for a number that stands there twice with the
// first.
QList<SeenSlot> slotsSeen(ScriptedCard &card)
{
    QList<SeenSlot> seen;
    for (const ScriptedSlot &entry : card.card) {
        const ScriptedSlot &slot = *card.slotOf(entry.id);
        const bool known = slot.slotInfo == CKR_OK;
        const bool present = slot.tokenInfo == CKR_OK;
        SeenSlot one;
        one.name = known ? field(slot.description, 64).remove(QChar(0)) : QString();
        one.reader = one.name.section(" #", 0, 0);
        one.flags = known ? slot.flags : 0;
        one.token = entry.id != noSlot && !one.name.contains("Virtual hotplug slot")
            && (present || slot.tokenInfo == 0xE0 || slot.tokenInfo == 0xE1);
        one.label = present ? field(slot.label, 32) : QString();
        one.tokenFlags = present ? slot.tokenFlags : 0;
        seen << one;
    }
    return seen;
}

void checkList(Pkcs11 &pkcs11, const QList<SeenSlot> &seen, bool listed)
{
    QStringList expected;
    for (const SeenSlot &slot : seen) {
        if (listed && (slot.flags & withCard) && !(slot.flags & notRead) && !expected.contains(slot.reader))
            expected << slot.reader;
    }
    QStringList names { "of before" };
    require(pkcs11.readers(names, withCard, notRead), "the library was started and is told not to have been");
    require(names == expected, "other readers than the slots tell");
    for (const QString &name : names)
        require(name.size() <= 64 && !name.contains(" #") && !name.contains(QChar(0)), "a name that is none");
    require(pkcs11.readers(names, 0, 0) && names.isEmpty(), "without a refused flag nothing is listed");
}

void checkChoice(Pkcs11 &pkcs11, const QList<SeenSlot> &seen, const QString &reader)
{
    QString cut = reader;
    while (!cut.isEmpty() && cut.back().isSpace())
        cut.chop(1);
    bool usable = false;
    for (const SeenSlot &slot : seen) {
        if (!slot.token || !slot.name.contains(reader))
            continue;
        usable = usable
            || (slot.reader == reader && (slot.tokenFlags & initialized) && !(slot.tokenFlags & waitsForCan)
                && !slot.label.contains('('));
        usable = usable || (!cut.isEmpty() && slot.reader == cut && slot.label.contains('('));
    }
    require(pkcs11.selectReader(reader) == usable, "a choice that the tokens do not bear out");
}

void checkStates(Pkcs11 &pkcs11, const QString &reader)
{
    for (const char *name : { Container::Authentication, Container::Qualified }) {
        const QMap<QString, QVariant> info = pkcs11.tokenInfo(reader, name);
        if (info.isEmpty())
            continue;
        for (const char *tries : { "tries", "triesSO" })
            require(info[tries].toInt() >= 0 && info[tries].toInt() <= Tries::notSet, "tries that there are not");
        const QString word = info["status"].toString();
        require(word == PinWord::change || word == PinWord::unblock || word == PinWord::first, "a word that is none");
    }
    const int pad = pkcs11.isPinPad(reader);
    require(pad == 0 || pad == 1 || pad == CardResult::noCard || pad == CardResult::failed, "a pinpad of another kind");
    const int chip = pkcs11.typeOfChip(reader);
    bool known = chip == 0;
    for (const CardChip &row : cardChips())
        known = known || chip == static_cast<int>(row.chipType);
    require(known, "a chip that is in no table");
}

void checkText(const QString &value, const QString &box)
{
    const ReaderList list = parseReaders(value);
    const int marks = value.count("||");
    if (marks == 0) {
        require(list.names.isEmpty() && list.error == value, "a word is not handed on");
    } else {
        require(list.error.isEmpty() && list.names.size() == value.split("||").size(), "other entries than there are");
        QStringList again;
        for (const QString &name : list.names)
            again << ":" + name;
        require(parseReaders(again.join("||")).names == list.names, "a list that is read again differs");
    }
    for (const QString &name : readerNames(list.names))
        require(!name.contains(" #"), "the mark of a container is shown");

    const ReaderProblem problem = readerProblem(value, false);
    require(!namesReader(problem.item), "a problem that is taken for a reader");
    require(problem.hideReaders == isCanProblem(value), "the readers are hidden for something else than the CAN");
    require(problem.message != readerProblem(value, true).message || !isCanProblem(value),
            "waiting for the CAN says nothing");

    const bool shown = !box.isEmpty() && readerNames(list.names).contains(box);
    for (const ReaderPage page :
         { ReaderPage::ShowsList, ReaderPage::NoElectricLayer, ReaderPage::NeedsNoCard, ReaderPage::Busy }) {
        const ReadersRule rule = readersRule(value, box, page);
        if (!list.error.isEmpty())
            require(rule == ReadersRule::Take, "a problem is not shown");
        else if (page == ReaderPage::NeedsNoCard)
            require(rule == ReadersRule::Note, "settings or help are disturbed");
        else if (page == ReaderPage::NoElectricLayer)
            require(rule == ReadersRule::Reload, "a document without a chip stays");
        else if (namesReader(box) && !shown)
            require(rule == ReadersRule::Reload, "the card of a reader that has gone stays");
        else if (namesReader(box))
            require(rule != ReadersRule::Reload, "the card is read anew for nothing");
        else
            require((rule == ReadersRule::Reload) == !value.isEmpty(), "a reader that has come is not read");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    Fuzz::home();
    // Kept to the end of the process, which has no use for its own.
    static ScriptedCard &card = *new ScriptedCard;
    Fuzz::silence();
    enum Part { Slots, SlotsAgain, Chosen, Message, Box, Parts };
    const QList<QByteArray> parts = Fuzz::parts(data, size, Parts);
    const QString reader = QString::fromUtf8(parts[Chosen]);

    checkText(QString::fromUtf8(parts[Message]), QString::fromUtf8(parts[Box]));

    Pkcs11 pkcs11;
    for (const Part listing : { Slots, SlotsAgain }) {
        takeSlots(card, parts[listing]);
        card.clearCalls();
        const bool starts = pkcs11.initialize() == 0;
        const bool lists = pkcs11.detectSlots();
        const QList<SeenSlot> seen = lists ? slotsSeen(card) : QList<SeenSlot>();
        if (!starts) {
            QStringList names { "of before" };
            require(!lists && !pkcs11.readers(names, withCard, notRead) && names.isEmpty(),
                    "readers without a library");
            continue;
        }
        // A function that was made to fail may change any answer.
        if (!parts[listing].contains("fail\t")) {
            require(lists, "slots are there and cannot be listed");
            checkList(pkcs11, seen, lists);
            checkChoice(pkcs11, seen, reader);
        } else {
            pkcs11.selectReader(reader);
        }
        checkStates(pkcs11, reader);
        for (int times = 0; times < 2; ++times)
            pkcs11.finalize();
    }
    require(card.count("C_Finalize") <= card.count("C_Initialize"), "an end without a beginning");
    require(!card.functions().contains("other"), "a function beside those agreed on was called");
    return 0;
}
