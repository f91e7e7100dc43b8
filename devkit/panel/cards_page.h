#pragma once

#include <QMap>
#include <QWidget>

#include "simworld/world_types.h"

class CardList;
class PanelWorld;

// All specimen cards; one is put in or taken out.
class CardsPage : public QWidget {
    Q_OBJECT

public:
    explicit CardsPage(PanelWorld &panelWorld);

private:
    void refresh();
    void fill();

    PanelWorld &world;
    CardList *list;
    std::map<std::string, sim::Card> cards; // as made
    std::string folder; // where they come from
};
