#include "gui/link_focus.h"

#include <QCoreApplication>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QTimer>

void LinkFocus::watch(QLabel *label)
{
    label->installEventFilter(this);
}

bool LinkFocus::eventFilter(QObject *object, QEvent *event)
{
    if (event->type() == QEvent::FocusIn) {
        const Qt::FocusReason reason = static_cast<QFocusEvent *>(event)->reason();
        if (reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason) {
            // Once the label has seen the event: a further Tab goes to its first link.
            QTimer::singleShot(0, object, [object] {
                QKeyEvent tab(QEvent::KeyPress, Qt::Key_Tab, Qt::NoModifier);
                QCoreApplication::sendEvent(object, &tab);
            });
        }
    }
    return QObject::eventFilter(object, event);
}
