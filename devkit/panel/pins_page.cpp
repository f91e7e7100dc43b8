#include "panel/pins_page.h"

#include "panel/card_words.h"
#include "panel/panel_parts.h"
#include "panel/panel_world.h"
#include "simworld/world_state.h"

#include <QCheckBox>
#include <QGridLayout>

namespace {

const QChar dot(0x2022);

// What identifies the widgets of a row: the container, or PUK.
QString wordOf(const std::string &container)
{
    return container.empty() ? QStringLiteral("PUK") : QString::fromStdString(container);
}

} // namespace

PinsPage::PinsPage(PanelWorld &panelWorld) :
    world(panelWorld), holder(PanelParts::heading({}, "lHolder")), show(new QCheckBox("Pokaż kody")),
    restore(PanelParts::button("Dowód jak nowy", "bRestore"))
{
    setObjectName("pagePins");
    show->setObjectName("cbShow");
    restore->setAccessibleDescription("przywraca kody i próby tego dowodu");
    auto *card = PanelParts::card();
    auto *inside = PanelParts::column(card, PanelParts::gap);
    inside->addWidget(holder);
    inside->addWidget(makeRows());
    auto *below = new QHBoxLayout;
    below->addWidget(show);
    below->addStretch();
    below->addWidget(restore);
    inside->addLayout(below);
    auto *layout = PanelParts::column(this);
    layout->addWidget(PanelParts::note("Kody dowodu, który jest w czytniku. Program zauważa zmianę, gdy ponownie "
                                       "włożysz dowód albo użyjesz kodu."));
    layout->addWidget(card);
    layout->addStretch();

    connect(show, &QCheckBox::toggled, this, &PinsPage::refresh);
    connect(restore, &QPushButton::clicked, this, [this] { world.tell(world.sim().restoreCard(world.reader().card)); });
    connect(&world, &PanelWorld::changed, this, &PinsPage::refresh);
    refresh();
}

QWidget *PinsPage::makeRows()
{
    auto *table = new QWidget;
    auto *grid = new QGridLayout(table);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(PanelParts::rowGap);
    grid->setVerticalSpacing(PanelParts::rowGap);
    grid->setColumnStretch(0, 1);
    for (const CardWords::Secret &secret : CardWords::secrets) {
        const std::string container = secret.container;
        const QString name = secret.name;
        const QString word = wordOf(container);
        auto *names = new QVBoxLayout;
        names->setSpacing(0);
        Row row { container, PanelParts::label({}, "rowValue", "lCode" + word),
                  PanelParts::choice("cTries" + word, name + ": pozostałe próby"),
                  PanelParts::button("Zablokuj", "bLock" + word) };
        names->addWidget(PanelParts::label(name, "caption"));
        names->addWidget(row.code);
        for (int tries = sim::maxTries; tries >= 0; --tries)
            row.tries->addItem(CardWords::tries(tries), tries);
        row.lock->setAccessibleName("Zablokuj: " + name);
        const int line = rows.size();
        grid->addLayout(names, line, 0);
        grid->addWidget(row.tries, line, 1);
        grid->addWidget(row.lock, line, 2);
        connect(row.tries, qOverload<int>(&QComboBox::activated), this,
                [this, container, box = row.tries] { setTries(container, box->currentData().toInt()); });
        connect(row.lock, &QPushButton::clicked, this, [this, container] { setTries(container, 0); });
        rows << row;
    }
    return table;
}

void PinsPage::setTries(const std::string &container, int tries)
{
    const std::string card = world.reader().card;
    world.tell(container.empty() ? world.sim().setPukTries(card, tries) : world.sim().setTries(card, container, tries));
}

void PinsPage::refresh()
{
    const std::string name = world.reader().card;
    const auto card = name.empty() ? std::nullopt : world.sim().card(name);
    const auto state = card && card->supported ? world.sim().cardState(name) : std::nullopt;
    holder->setText(card ? CardWords::holder(*card) : QStringLiteral("W czytniku nie ma dowodu"));
    restore->setEnabled(state.has_value());
    for (const Row &row : qAsConst(rows)) {
        const bool isPuk = row.container.empty();
        const sim::PinState pin = state && !isPuk ? state->pins.at(row.container) : sim::PinState();
        const bool isSet = state && pin.initialized && !pin.toBeChanged;
        const QString code = QString::fromStdString(!state ? std::string() : isPuk ? state->puk : pin.pin);
        if (!state)
            row.code->setText(QString());
        else if (!isSet)
            row.code->setText("nienadany");
        else
            row.code->setText(show->isChecked() ? code : QString(code.size(), dot));
        row.code->setAccessibleName(show->isChecked() || !isSet ? QString() : QStringLiteral("kod ukryty"));
        const int tries = !state ? sim::maxTries : isPuk ? state->pukTries : pin.tries;
        row.tries->setCurrentIndex(row.tries->findData(tries));
        row.tries->setEnabled(isSet);
        row.lock->setEnabled(isSet && tries > 0);
    }
}
