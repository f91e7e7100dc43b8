#include "states.h"

#include <QCoreApplication>
#include <QEvent>
#include <QVariant>

namespace {

bool hovered(Tour &tour)
{
    QWidget *tile = tour.find("authorizationCert");
    QEvent enter(QEvent::Enter);
    QCoreApplication::sendEvent(tile, &enter);
    return tour.waitFor([tile] { return tile->property("MouseOver").toBool(); });
}

} // namespace

QVector<State> homeStates()
{
    return {
        { "home-anna", "anna", nullptr },
        { "home-jan", "jan", nullptr },
        { "home-zaneta", "zaneta", nullptr },
        { "home-bartlomiej", "bartlomiej", nullptr },
        { "home-long-names", "long-names", nullptr },
        { "home-no-photo", "no-photo", nullptr },
        { "home-no-dg13", "no-dg13", nullptr },
        { "home-locked-pins", "locked-pins", nullptr },
        { "home-hover-three-qualified", "three-qualified", hovered },
    };
}
