#include "gui/key_focus.h"

#include <QAbstractButton>
#include <QAbstractScrollArea>
#include <QApplication>
#include <QComboBox>
#include <QFocusEvent>
#include <QLineEdit>
#include <QStyle>

namespace {

constexpr char property[] = "KeyFocus";

bool isText(const QWidget *widget)
{
    return !qobject_cast<const QAbstractButton *>(widget) && !qobject_cast<const QComboBox *>(widget)
        && !qobject_cast<const QLineEdit *>(widget) && !qobject_cast<const QAbstractScrollArea *>(widget);
}

void mark(QWidget *widget, bool shown)
{
    if (widget->property(property).toBool() == shown)
        return;
    widget->setProperty(property, shown);
    widget->style()->unpolish(widget);
    widget->style()->polish(widget);
}

} // namespace

void KeyFocus::watch()
{
    if (!qApp->findChild<KeyFocus *>(QString(), Qt::FindDirectChildrenOnly))
        qApp->installEventFilter(new KeyFocus(qApp));
}

bool KeyFocus::eventFilter(QObject *object, QEvent *event)
{
    const QEvent::Type type = event->type();
    if (type == QEvent::MouseButtonPress)
        tabbed = false;
    if ((type != QEvent::FocusIn && type != QEvent::FocusOut) || !object->isWidgetType())
        return false;
    const Qt::FocusReason reason = static_cast<QFocusEvent *>(event)->reason();
    if (type == QEvent::FocusIn && (reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason))
        tabbed = true;
    auto *widget = static_cast<QWidget *>(object);
    if (isText(widget))
        mark(widget, type == QEvent::FocusIn && tabbed);
    return false;
}
