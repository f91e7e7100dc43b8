#include "gui/spoken_focus.h"

#include <QAccessible>
#include <QWidget>

void focusAloud(QWidget *widget)
{
    if (!widget->hasFocus()) {
        widget->setFocus();
        return;
    }
    QAccessibleEvent event(widget, QAccessible::Focus);
    QAccessible::updateAccessibility(&event);
}
