#include "gui/gui_dialog.h"

#include <QDebug>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QScreen>
#include <QStyle>
#include <QWindow>

namespace {

constexpr int titleBarWidth = 900;
constexpr int titleBarHeight = 80;

bool strictlyWithin(int value, int from, int length)
{
    return from < value && value < from + length;
}

} // namespace

GuiDialog::GuiDialog(QWidget *parentWindow) : QDialog(nullptr), parent(parentWindow) { }

void GuiDialog::resizeAndCenter(int width, int height)
{
    const QSize wanted(width, height);
    const QScreen *screen = QGuiApplication::primaryScreen();
    QRect target(QPoint(), wanted);
    if (parent) {
        qDebug().noquote() << "Center in parent widget";
        target = parent->geometry();
    } else if (screen) {
        target = screen->availableGeometry();
    }
    setGeometry(QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, wanted, target));
}

void GuiDialog::setDragWidget(QWidget *widget)
{
    dragWidget = widget;
}

bool GuiDialog::isTitleBar(QPoint press, QSize dialog, QSize frame)
{
    const int dx = qAbs(dialog.width() - frame.width()) / 2;
    const int dy = qAbs(dialog.height() - frame.height()) / 2;
    return strictlyWithin(press.x(), dx, titleBarWidth) && strictlyWithin(press.y(), dy, titleBarHeight);
}

void GuiDialog::mousePressEvent(QMouseEvent *event)
{
    pressPos = event->pos();
    if (event->button() == Qt::LeftButton)
        pressed = true;
}

void GuiDialog::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        pressed = false;
}

void GuiDialog::mouseMoveEvent(QMouseEvent *event)
{
    Q_UNUSED(event)
    if (isDragging() && windowHandle())
        windowHandle()->startSystemMove();
}

bool GuiDialog::isDragging() const
{
    return pressed && dragWidget && isTitleBar(pressPos, size(), dragWidget->size());
}
