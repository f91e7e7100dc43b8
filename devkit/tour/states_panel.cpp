#include "states.h"

#include "panel/panel_window.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QListWidget>
#include <QTabWidget>

namespace {

// The trainer's window on one of its pages, after `work` on it.
template <class Work>
bool panel(Tour &tour, int page, Work work)
{
    PanelWindow window;
    window.findChild<QTabWidget *>()->setCurrentIndex(page);
    work(window);
    return tour.showWindow(window);
}

bool cards(Tour &tour)
{
    return panel(tour, 0, [](PanelWindow &window) { window.findChild<QListWidget *>("listCards")->setFocus(); });
}

bool pins(Tour &tour)
{
    return panel(tour, 1, [](PanelWindow &) {});
}

bool pinsShown(Tour &tour)
{
    return panel(tour, 1, [](PanelWindow &window) { window.findChild<QCheckBox *>("cbShow")->click(); });
}

bool pinsWithoutCard(Tour &tour)
{
    tour.world.removeCard(Tour::reader);
    return pins(tour);
}

bool reader(Tour &tour)
{
    return panel(tour, 2, [](PanelWindow &) {});
}

bool keypad(Tour &tour)
{
    tour.world.setPinpad(Tour::reader, true);
    tour.world.padChange("1234", "4321");
    return panel(tour, 2, [](PanelWindow &window) { window.findChild<QLineEdit *>("lineNewPin")->setFocus(); });
}

template <int index>
bool lesson(Tour &tour)
{
    return panel(tour, 3, [](PanelWindow &window) {
        auto *list = window.findChild<QListWidget *>("listLessons");
        list->setCurrentRow(index);
        list->setFocus();
    });
}

} // namespace

QVector<State> panelStates()
{
    return {
        { "panel-cards", "anna", cards },
        { "panel-pins", "zaneta", pins },
        { "panel-pins-shown", "first-pin", pinsShown },
        { "panel-pins-no-card", "anna", pinsWithoutCard },
        { "panel-reader", "anna", reader },
        { "panel-keypad", "anna", keypad },
        { "panel-lesson-lost-pin", "anna", lesson<0> },
        { "panel-lesson-first-pin", "anna", lesson<1> },
        { "panel-lesson-blocked-puk", "anna", lesson<2> },
        { "panel-lesson-no-layer", "anna", lesson<3> },
    };
}
