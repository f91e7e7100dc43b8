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
        { "home-anna", "anna" },
        { "home-jan", "jan" },
        { "home-zaneta", "zaneta" },
        { "home-bartlomiej", "bartlomiej" },
        { "home-long-names", "long-names" },
        { "home-no-photo", "no-photo" },
        { "home-no-dg13", "no-dg13" },
        { "home-locked-pins", "locked-pins" },
        { "home-hover-three-qualified", "three-qualified", hovered },
    };
}
