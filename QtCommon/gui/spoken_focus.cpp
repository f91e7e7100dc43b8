#include "gui/spoken_focus.h"

#include <QWidget>

namespace {

QAccessible::UpdateHandler handlerBefore = nullptr;

void tellAllButFocus(QAccessibleEvent *event)
{
    if (event->type() == QAccessible::Focus)
        return;
    // Without a handler the event takes the toolkit's own way to the system.
    QAccessible::installUpdateHandler(handlerBefore);
    QAccessible::updateAccessibility(event);
    // Anew, since the one before may have put itself back.
    QAccessible::installUpdateHandler(tellAllButFocus);
}

} // namespace

FocusPause::FocusPause() : before(QAccessible::installUpdateHandler(tellAllButFocus))
{
    if (before != tellAllButFocus)
        handlerBefore = before;
}

FocusPause::~FocusPause()
{
    QAccessible::installUpdateHandler(before);
}

void leaveFocus(const QWidget *window)
{
    const FocusPause pause;
    if (QWidget *focus = window->focusWidget())
        focus->clearFocus();
}

void focusAloud(QWidget *widget)
{
    if (!widget->hasFocus()) {
        widget->setFocus();
        return;
    }
    QAccessibleEvent event(widget, QAccessible::Focus);
    QAccessible::updateAccessibility(&event);
}
