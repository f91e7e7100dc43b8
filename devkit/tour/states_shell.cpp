#include "states.h"

namespace {

constexpr int slowCardMs = 40;
constexpr int loaderPaintedMs = 300;

bool noCard(Tour &tour)
{
    tour.window->loadedReaders({}, "NO_CARD");
    return tour.waitForPage("pageDisconected");
}

bool noElectronicLayer(Tour &tour)
{
    return tour.waitForPage("pageNoElectricLayer");
}

bool loader(Tour &tour)
{
    tour.world.setDelay(slowCardMs);
    tour.window->loadAll();
    tour.pause(loaderPaintedMs);
    return tour.loaderShown();
}

bool readerWarning(Tour &tour)
{
    return tour.showDialog([&tour] { QMetaObject::invokeMethod(tour.window.get(), "showReaderWarningPopup"); });
}

} // namespace

QVector<State> shellStates()
{
    return {
        { "no-card", "anna", noCard },
        { "no-electronic-layer", "no-certificates", noElectronicLayer },
        { "loader", "anna", loader },
        { "reader-warning", "", readerWarning },
    };
}
