#include "panel/cards_page.h"

#include "panel/card_list.h"
#include "panel/card_words.h"
#include "panel/panel_parts.h"
#include "panel/panel_world.h"

#include <QLabel>
#include <QVBoxLayout>

#include <algorithm>

CardsPage::CardsPage(PanelWorld &panelWorld) : world(panelWorld), list(new CardList)
{
    setObjectName("pageCards");
    list->setObjectName("listCards");
    list->setAccessibleName("Dowody");
    list->setAccessibleDescription("Spacja wkłada dowód do czytnika albo go wyjmuje");
    auto *layout = PanelParts::column(this);
    layout->addWidget(PanelParts::note("Kliknięcie wkłada dowód do czytnika albo go z niego wyjmuje."));
    layout->addWidget(list, 1);
    connect(list, &CardList::toggled, this, [this](const QString &name) { world.toggleCard(name.toStdString()); });
    connect(&world, &PanelWorld::changed, this, &CardsPage::refresh);
    fill();
    refresh();
}

void CardsPage::fill()
{
    folder = world.sim().cardsDirectory();
    list->clear();
    cards.clear();
    for (const sim::Card &known : world.sim().cards()) {
        const auto card = world.sim().card(known.name);
        if (!card)
            continue;
        cards[card->name] = *card;
        list->addCard(QString::fromStdString(card->name), CardWords::holder(*card), CardWords::portrait(*card));
    }
    if (list->count() > 0)
        list->setCurrentRow(0);
}

void CardsPage::refresh()
{
    if (world.sim().cardsDirectory() != folder)
        fill();
    const std::vector<sim::Reader> readers = world.readers();
    for (int row = 0; row < list->count(); ++row) {
        const std::string name = list->item(row)->data(CardList::Name).toString().toStdString();
        const auto state = world.sim().cardState(name);
        const bool inserted = std::any_of(readers.begin(), readers.end(),
                                          [&name](const sim::Reader &reader) { return reader.card == name; });
        list->setState(list->item(row), state ? CardWords::state(cards[name], *state) : QString(), inserted);
    }
}
