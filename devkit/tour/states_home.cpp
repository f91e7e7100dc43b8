#include "states.h"

#include <QCoreApplication>
#include <QEvent>
#include <QFile>
#include <QVariant>

namespace {

bool hovered(Tour &tour)
{
    QWidget *tile = tour.find("authorizationCert");
    QEvent enter(QEvent::Enter);
    QCoreApplication::sendEvent(tile, &enter);
    return tour.waitFor([tile] { return tile->property("MouseOver").toBool(); });
}

// A choice of readers, all known to be good.
bool threeReaders(Tour &tour)
{
    const QStringList names { Tour::reader, "Czytnik zbliżeniowy Interface (kontaktowy i bezstykowy) 00 00",
                              "Broadgate Corp Contacted SmartCard Reader with Keypad 01 02" };
    Tour::nameReaders(names);
    tour.window->loadedReaders(names);
    return tour.waitFor([&tour] { return tour.find("cbReaders")->isEnabled(); });
}

bool readersOpen(Tour &tour)
{
    return threeReaders(tour) && tour.showList(tour.find<QComboBox>("cbReaders"));
}

bool readersFocused(Tour &tour)
{
    const bool shown = threeReaders(tour);
    tour.find("cbReaders")->setFocus(Qt::TabFocusReason);
    return shown && tour.waitFor([&tour] { return tour.find("cbReaders")->hasFocus(); });
}

// No line names the reader.
bool readerUnknown(Tour &tour)
{
    QFile::remove(Tour::readersConfPath());
    tour.window->loadAll();
    return tour.waitFor([&tour] { return !tour.find("warningFrame")->isHidden() && tour.find("loading")->isHidden(); });
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
        { "home-three-readers", "anna", threeReaders },
        { "home-readers-focused", "anna", readersFocused },
        { "home-readers-open", "anna", readersOpen },
        { "home-reader-unknown", "anna", readerUnknown },
        { "home-hover-three-qualified", "three-qualified", hovered },
    };
}
