#include "tour.h"

#include "contact_sheet.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QPainter>
#include <QThread>
#include <QTimer>

#include <cstdio>

namespace {

constexpr int patienceMs = 15000;
constexpr int dialogPaintedMs = 400;
const QColor desktop(0xCD, 0xD2, 0xD5);

} // namespace

bool Tour::waitFor(const std::function<bool()> &condition)
{
    QDeadlineTimer deadline(patienceMs);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(5);
    }
    // What was laid out or repolished on the way.
    for (int i = 0; i < 5; ++i)
        QCoreApplication::processEvents();
    return true;
}

void Tour::pause(int milliseconds)
{
    const QDeadlineTimer end(milliseconds);
    waitFor([&end] { return end.hasExpired(); });
}

bool Tour::waitForPage(const char *page)
{
    return waitFor(
        [&] { return find("loading")->isHidden() && find<QStackedWidget>("pager")->currentWidget() == find(page); });
}

bool Tour::click(const char *button)
{
    auto *widget = find<QAbstractButton>(button);
    if (!widget->isVisible() || !widget->isEnabled())
        return false;
    widget->click();
    return true;
}

bool Tour::showCard(const QString &card, void (*prepare)(sim::SimWorld &world))
{
    world.reset();
    window = std::make_unique<Window>();
    window->show();
    if (!waitFor([this] { return window->isVisible(); }))
        return false;
    if (card.isEmpty())
        return true;
    if (!world.insertCard(reader, card.toStdString()))
        return false;
    if (prepare)
        prepare(world);
    window->loadedReaders({ reader });
    return waitFor([this] {
        return find("loading")->isHidden()
            && (!find("bArrowICAO")->isHidden()
                || find<QStackedWidget>("pager")->currentWidget() == find("pageNoElectricLayer"));
    });
}

void Tour::closeWindow()
{
    // Also ends whatever a call of the card library waits for.
    world.reset();
    // With the page of a pinpad operation shown the program refuses to quit.
    find<QStackedWidget>("pager")->setCurrentWidget(find("pageHome"));
    window->quitClicked();
    waitFor([this] { return !window->isVisible(); });
    window.reset();
    dialog = {};
}

bool Tour::showDialog(const std::function<void()> &open)
{
    QTimer::singleShot(dialogPaintedMs, window.get(), [this] {
        if (QWidget *shown = QApplication::activeModalWidget())
            dialog = shown->grab();
        emit window->closePopups();
    });
    open();
    return !dialog.isNull();
}

bool Tour::take(const QString &name)
{
    const QPixmap grabbed = dialog.isNull() ? window->grab() : dialog;
    QImage picture(grabbed.size(), QImage::Format_RGB32);
    picture.setDevicePixelRatio(grabbed.devicePixelRatio());
    picture.fill(desktop);
    QPainter(&picture).drawPixmap(0, 0, grabbed);
    const QString path = QDir(target).filePath(name + ending + ".png");
    if (!picture.save(path)) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
        return false;
    }
    pictures << path;
    return true;
}

bool Tour::contactSheet() const
{
    return saveContactSheet(pictures, QDir(target).filePath("contact-sheet" + ending + ".png"));
}
