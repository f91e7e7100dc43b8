#include "states.h"

#include <QApplication>
#include <QKeyEvent>
#include <QScrollBar>
#include <QTableWidget>

// The pages behind the arrows of the home page.
namespace {

bool personalData(Tour &tour)
{
    return tour.open("bArrowICAO", "pageAllData");
}

bool personalDataByKey(Tour &tour)
{
    return personalData(tour) && tour.waitFor([&tour] {
        // Rows show the focus to who moves by Tab. It may go to any row; here to the one that stands alone in the
        // middle.
        QKeyEvent tab(QEvent::KeyPress, Qt::Key_Tab, Qt::NoModifier);
        QCoreApplication::sendEvent(tour.find("nameFrame_2"), &tab);
        tour.find("birthPlaceFrame")->setFocus(Qt::TabFocusReason);
        return tour.find("birthPlaceFrame")->hasFocus();
    });
}

template <const char *arrow>
bool certificates(Tour &tour)
{
    // The first card takes the focus, a little later.
    return tour.open(arrow, "pageCertInfo") && tour.waitFor([&tour] {
        const QWidget *focus = QApplication::focusWidget();
        return focus && tour.find("tableCert")->isAncestorOf(focus);
    });
}

constexpr char authentication[] = "bArrowAuthenCert";
constexpr char authorization[] = "bArrowAuthorCert";
constexpr char presence[] = "bArrowPresenceCert";
constexpr char qualified[] = "bArrowQualifiedCert";

bool lastOfQualified(Tour &tour)
{
    if (!certificates<qualified>(tour))
        return false;
    QScrollBar *bar = tour.find<QTableWidget>("tableCert")->verticalScrollBar();
    bar->setValue(bar->maximum());
    return bar->maximum() > 0;
}

bool cutOff(Tour &tour)
{
    return tour.open(authentication, "pageCertInfo");
}

bool buttonFocused(Tour &tour)
{
    if (!certificates<authentication>(tour))
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
    const bool clicked = certificates<authentication>(tour) && tour.click("bDetailsCert");
    const bool shown = clicked && tour.waitFor([&tour] { return tour.loaderShown(); });
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
        { "certificates-authentication", "anna", certificates<authentication> },
        { "certificates-authorization", "jan", certificates<authorization> },
        { "certificates-presence", "ewa", certificates<presence> },
        { "certificates-three-qualified", "three-qualified", certificates<qualified> },
        { "certificates-odd", "odd-certificates", certificates<qualified> },
        { "certificates-odd-end", "odd-certificates", lastOfQualified },
        { "certificates-cut-off", "odd-certificates", cutOff },
        { "certificates-button", "anna", buttonFocused },
        { "certificates-opening", "anna", opening },
    };
}
