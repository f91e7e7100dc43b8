#include "panel/reader_page.h"

#include "panel/card_words.h"
#include "panel/panel_parts.h"
#include "panel/panel_world.h"
#include "simworld/world_state.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QLineEdit>
#include <QRegularExpressionValidator>

#include <algorithm>

namespace {

const struct {
    const char *name;
    int ms; // more for each call of the card's library
} speeds[] = {
    { "zwykłe tempo", 0 },
    { "powolny: 0,1 s na polecenie", 100 },
    { "bardzo powolny: 0,3 s na polecenie", 300 },
    { "ledwie żywy: 1 s na polecenie", 1000 },
};

QString waitingWords(int waiting, int ready)
{
    if (waiting > 0)
        return "Program czeka na klawisze.";
    return ready == 0 ? QStringLiteral("Program nie czeka na klawisze.")
                      : QString("Klawisze czekają na program: %1.").arg(ready);
}

} // namespace

ReaderPage::ReaderPage(PanelWorld &panelWorld) :
    world(panelWorld), reader(PanelParts::choice("cReader", "Czytnik")), pinpad(new QCheckBox("Czytnik ma klawiaturę")),
    speed(PanelParts::choice("cSpeed", "Tempo dowodu")), keypad(PanelParts::card()),
    waits(PanelParts::label({}, "strong", "lWaits")),
    containers(PanelParts::choice("cContainer", "Kod, którego dotyczy odpowiedź")), newPin(new QLineEdit),
    digits(new QRegularExpressionValidator(newPin)), forget(nullptr)
{
    setObjectName("pageReader");
    auto *layout = PanelParts::column(this);
    layout->addWidget(makeReader());
    layout->addWidget(makeKeypad());
    layout->addWidget(makeSpeed());
    layout->addStretch();
    connect(&world, &PanelWorld::changed, this, &ReaderPage::refresh);
    refresh();
    proposeNewPin();
}

QWidget *ReaderPage::makeReader()
{
    pinpad->setObjectName("cbPinpad");
    auto *card = PanelParts::card();
    auto *inside = PanelParts::column(card, PanelParts::gap, PanelParts::rowGap);
    inside->addWidget(PanelParts::heading("Czytnik"));
    inside->addWidget(reader);
    inside->addWidget(pinpad, 0, Qt::AlignLeft);
    connect(reader, qOverload<int>(&QComboBox::activated), this, [this] { world.choose(reader->currentText()); });
    connect(pinpad, &QCheckBox::clicked, this,
            [this](bool on) { world.tell(world.sim().setPinpad(world.reader().name, on)); });
    return card;
}

QPushButton *ReaderPage::answer(const QString &text, const QString &name, const std::function<bool()> &work)
{
    auto *button = PanelParts::button(text, name);
    connect(button, &QPushButton::clicked, this, [this, work] { world.tell(work()); });
    return button;
}

QWidget *ReaderPage::makeKeypad()
{
    keypad->setObjectName("frameKeypad");
    newPin->setObjectName("lineNewPin");
    newPin->setAccessibleName("Nowy PIN");
    newPin->setValidator(digits);
    newPin->setMinimumHeight(PanelParts::rowHeight);
    for (const CardWords::Secret &secret : CardWords::secrets) {
        if (*secret.container != '\0')
            containers->addItem(secret.name, QString(secret.container));
    }
    sim::SimWorld &sim = world.sim();
    const auto fresh = [this] { return newPin->text().toStdString(); };
    answers = { answer("Zmiana PIN-u", "bPadChange", [this, &sim, fresh] { return sim.padChange(pin().pin, fresh()); }),
                answer("Odblokowanie", "bPadUnblock", [this, &sim, fresh] { return sim.padUnblock(puk(), fresh()); }),
                answer("Pierwszy PIN", "bPadFirst", [this, &sim, fresh] { return sim.padFirstPin(puk(), fresh()); }) };
    using Kind = sim::PadAnswer::Kind;
    const QVector<QPushButton *> others {
        answer("Zły kod", "bPadWrong",
               [this, &sim] {
                   return sim.pad({ Kind::Enter, wrongCode(), {}, {}, 0 });
               }),
        answer("Różne PIN-y", "bPadMismatch",
               [&sim] {
                   return sim.pad({ Kind::Mismatch, {}, {}, {}, 0 });
               }),
        answer("Czerwony klawisz", "bPadCancel",
               [&sim] {
                   return sim.pad({ Kind::Cancel, {}, {}, {}, 0 });
               }),
    };
    forget = answer("Zapomnij", "bPadClear", [&sim] { return sim.clearPad(); });
    forget->setAccessibleDescription("usuwa odpowiedzi, na które program jeszcze nie czekał");

    auto *grid = new QGridLayout;
    grid->setSpacing(PanelParts::rowGap);
    // In the order in which Tab is to come to them.
    auto *choose = new QHBoxLayout;
    choose->addWidget(containers, 1);
    choose->addWidget(newPin, 1);
    grid->addLayout(choose, 0, 0, 1, answers.size());
    for (int column = 0; column < answers.size(); ++column) {
        answers[column]->setAccessibleDescription("wpisuje na klawiaturze czytnika właściwe kody i nowy PIN");
        others[column]->setAccessibleDescription("odpowiedź na klawiaturze czytnika");
        grid->addWidget(answers[column], 1, column);
        grid->setColumnStretch(column, 1);
    }
    for (int column = 0; column < others.size(); ++column)
        grid->addWidget(others[column], 2, column);
    auto *state = new QHBoxLayout;
    state->addWidget(waits, 1);
    state->addWidget(forget);
    auto *inside = PanelParts::column(keypad, PanelParts::gap, PanelParts::rowGap);
    inside->addWidget(PanelParts::heading("Klawiatura czytnika"));
    inside->addLayout(state);
    inside->addLayout(grid);
    connect(containers, qOverload<int>(&QComboBox::activated), this, [this] {
        proposeNewPin();
        refresh();
    });
    connect(newPin, &QLineEdit::textChanged, this, &ReaderPage::refreshKeypad);
    return keypad;
}

QWidget *ReaderPage::makeSpeed()
{
    auto *card = PanelParts::card();
    auto *inside = PanelParts::column(card, PanelParts::gap, PanelParts::rowGap);
    inside->addWidget(PanelParts::heading("Tempo dowodu"));
    for (const auto &row : speeds)
        speed->addItem(row.name, row.ms);
    inside->addWidget(speed);
    connect(speed, qOverload<int>(&QComboBox::activated), this,
            [this] { world.tell(world.sim().setDelay(speed->currentData().toInt())); });
    return card;
}

std::string ReaderPage::container() const
{
    return containers->currentData().toString().toStdString();
}

sim::PinState ReaderPage::pin() const
{
    const auto state = world.sim().cardState(world.reader().card);
    return state ? state->pins.at(container()) : sim::PinState();
}

std::string ReaderPage::puk() const
{
    const auto state = world.sim().cardState(world.reader().card);
    return state ? state->puk : std::string();
}

std::string ReaderPage::wrongCode() const
{
    const auto length = static_cast<std::size_t>(sim::pinDigits(container()));
    std::string code(length, '0');
    return code == pin().pin || code == puk() ? std::string(length, '1') : code;
}

// The digits of the present one from behind.
void ReaderPage::proposeNewPin()
{
    const std::string now = pin().pin;
    digits->setRegularExpression(QRegularExpression(QString("\\d{%1}").arg(sim::pinDigits(container()))));
    newPin->setText(QString::fromStdString(std::string(now.rbegin(), now.rend())));
}

void ReaderPage::refresh()
{
    refreshReaders();
    refreshKeypad();
    refreshSpeed();
}

void ReaderPage::refreshReaders()
{
    const sim::Reader now = world.reader();
    QStringList names;
    for (const sim::Reader &each : world.readers())
        names << QString::fromStdString(each.name);
    QStringList shown;
    for (int i = 0; i < reader->count(); ++i)
        shown << reader->itemText(i);
    const bool isThere = !names.isEmpty();
    if (!isThere)
        names << "brak czytnika";
    if (shown != names) {
        reader->clear();
        reader->addItems(names);
    }
    reader->setCurrentIndex(isThere ? names.indexOf(QString::fromStdString(now.name)) : 0);
    reader->setEnabled(names.size() > 1);
    pinpad->setEnabled(isThere);
    pinpad->setChecked(now.pinpad);
}

// A delay that is none of ours is shown as it is.
void ReaderPage::refreshSpeed()
{
    const int now = world.sim().delay();
    while (speed->count() > int(std::size(speeds)))
        speed->removeItem(speed->count() - 1);
    if (speed->findData(now) < 0)
        speed->addItem(QString("%1 ms na polecenie").arg(now), now);
    speed->setCurrentIndex(speed->findData(now));
}

void ReaderPage::refreshKeypad()
{
    const sim::Reader now = world.reader();
    const int ready = static_cast<int>(world.sim().padAnswers().size());
    keypad->setEnabled(now.pinpad && !now.card.empty());
    waits->setText(waitingWords(world.sim().waitingCalls(), ready));
    forget->setEnabled(ready > 0);
    for (QPushButton *button : qAsConst(answers))
        button->setEnabled(newPin->hasAcceptableInput());
}
