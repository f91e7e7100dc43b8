#include "tour.h"

#include "contact_sheet.h"
#include "look/widget_walk.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QDeadlineTimer>
#include <QDir>
#include <QMouseEvent>
#include <QPainter>
#include <QTimer>

#include <cstdio>

namespace {

constexpr int dialogPaintedMs = 400;
const QColor desktop(0xCD, 0xD2, 0xD5);

QStringList faults(const Window &window)
{
    QStringList found = WidgetWalk::faults(&window);
    // The picture stands between the two sentences of the label, in the room of their breaks.
    found.removeOne("lchange_card lies over lIntegration");
    return found;
}

} // namespace

void Tour::pause(int milliseconds)
{
    const QDeadlineTimer end(milliseconds);
    waitFor([&end] { return end.hasExpired(); });
}

void Tour::nameReaders(const QStringList &names)
{
    QString lines;
    for (const QString &name : names)
        lines += name + "=E65535\r\n";
    writeReadersConf(lines.toUtf8());
}

bool Tour::begin(const std::string &card, const std::function<void(sim::SimWorld &world)> &prepare)
{
    world.reset();
    nameReaders(card.empty() ? QStringList() : QStringList { reader });
    openWindow();
    if (!waitFor([this] { return window->isVisible(); }))
        return false;
    // A click on nothing: whoever works with the mouse sees no rings round text.
    for (QEvent::Type type : { QEvent::MouseButtonPress, QEvent::MouseButtonRelease }) {
        QMouseEvent click(type, QPointF(1, 1), Qt::LeftButton, Qt::NoButton, Qt::NoModifier);
        QCoreApplication::sendEvent(find("footer"), &click);
    }
    return card.empty() || showCard(card, reader, prepare);
}

void Tour::end()
{
    // Also ends whatever a call of the card library waits for.
    world.reset();
    closeWindow();
    dialog = {};
}

bool Tour::showDialog(const std::function<void()> &open)
{
    QTimer::singleShot(dialogPaintedMs, window.get(), [this] {
        if (QWidget *shown = QApplication::activeModalWidget())
            keepDialog(*shown);
        emit window->closePopups();
    });
    open();
    return !dialog.isNull();
}

bool Tour::showWindow(QWidget &other)
{
    other.show();
    other.activateWindow();
    pause(dialogPaintedMs);
    keepDialog(other);
    return other.isVisible();
}

void Tour::keepDialog(QWidget &shown)
{
    dialog = shown.grab();
    dialogFaults = WidgetWalk::faults(&shown);
}

// As it lies over the window; an open list is a window of its own.
bool Tour::showList(QComboBox *box)
{
    box->showPopup();
    if (!waitFor([box] { return box->view()->isVisible(); }))
        return false;
    QWidget *list = box->view()->window();
    dialog = window->grab();
    QPainter(&dialog).drawPixmap(window->mapFromGlobal(list->mapToGlobal(QPoint())), list->grab());
    box->hidePopup();
    return true;
}

bool Tour::take(const QString &name)
{
    // What was laid out or repolished on the way.
    for (int i = 0; i < 5; ++i)
        QCoreApplication::processEvents();
    const QPixmap grabbed = dialog.isNull() ? window->grab() : dialog;
    const QStringList broken = dialog.isNull() ? faults(*window) : dialogFaults;
    for (const QString &fault : broken)
        std::fprintf(stderr, "%s: %s\n", qPrintable(name), qPrintable(fault));
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
    return broken.isEmpty();
}

bool Tour::contactSheet() const
{
    return saveContactSheet(pictures, QDir(target).filePath("contact-sheet" + ending + ".png"));
}
