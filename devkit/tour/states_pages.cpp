#include "states.h"

#include <QApplication>
#include <QScrollBar>
#include <QTableWidget>

// The pages behind the arrows of the home page.
namespace {

bool personalData(Tour &tour)
{
    return tour.click("bArrowICAO") && tour.waitForPage("pageAllData");
}

bool personalDataByKey(Tour &tour)
{
    return personalData(tour) && tour.waitFor([&tour] {
        // The focus may go to any row; here to the one that stands alone in the middle.
        tour.find("birthPlaceFrame")->setFocus(Qt::TabFocusReason);
        return tour.find("birthPlaceFrame")->hasFocus();
    });
}

bool certificatePage(Tour &tour, const char *arrow)
{
    // The first card takes the focus, a little later.
    return tour.click(arrow) && tour.waitForPage("pageCertInfo") && tour.waitFor([&tour] {
        const QWidget *focus = QApplication::focusWidget();
        return focus && tour.find("tableCert")->isAncestorOf(focus);
    });
}

bool authentication(Tour &tour)
{
    return certificatePage(tour, "bArrowAuthenCert");
}

bool authorization(Tour &tour)
{
    return certificatePage(tour, "bArrowAuthorCert");
}

bool presence(Tour &tour)
{
    return certificatePage(tour, "bArrowPresenceCert");
}

bool qualified(Tour &tour)
{
    return certificatePage(tour, "bArrowQualifiedCert");
}

bool lastOfQualified(Tour &tour)
{
    if (!qualified(tour))
        return false;
    QScrollBar *bar = tour.find<QTableWidget>("tableCert")->verticalScrollBar();
    bar->setValue(bar->maximum());
    return bar->maximum() > 0 && tour.waitFor([] { return true; });
}

bool cutOff(Tour &tour)
{
    return tour.click("bArrowAuthenCert") && tour.waitForPage("pageCertInfo");
}

bool buttonFocused(Tour &tour)
{
    if (!authentication(tour))
        return false;
    auto *button = tour.find("tableCert")->findChild<QWidget *>("bDetailsCert");
    button->setFocus(Qt::TabFocusReason);
    return tour.waitFor([button] { return button->hasFocus(); });
}

// No viewer is there to be found.
bool opening(Tour &tour)
{
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", {});
    const bool clicked = authentication(tour) && tour.click("bDetailsCert");
    const bool shown = clicked && tour.waitFor([&tour] { return !tour.find("loading")->isHidden(); });
    qputenv("PATH", path);
    return shown;
}

} // namespace

QVector<State> pageStates()
{
    return {
        { "data-anna", "anna", personalData },
        { "data-keyboard", "jan", personalDataByKey },
        { "data-long-names", "long-names", personalData },
        { "data-no-photo", "no-photo", personalData },
        { "data-no-dg11", "no-dg11", personalData },
        { "data-no-dg12", "no-dg12", personalData },
        { "data-no-dg13", "no-dg13", personalData },
        { "data-foreigner", "foreigner", personalData },
        { "data-none", "no-data", personalData },
        { "certificates-authentication", "anna", authentication },
        { "certificates-authorization", "jan", authorization },
        { "certificates-presence", "ewa", presence },
        { "certificates-three-qualified", "three-qualified", qualified },
        { "certificates-odd", "odd-certificates", qualified },
        { "certificates-odd-end", "odd-certificates", lastOfQualified },
        { "certificates-cut-off", "odd-certificates", cutOff },
        { "certificates-button", "anna", buttonFocused },
        { "certificates-opening", "anna", opening },
    };
}
