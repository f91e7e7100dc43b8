#include "gui/key_focus.h"

#include <QAbstractButton>
#include <QAbstractScrollArea>
#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QStyle>

namespace {

constexpr char property[] = "KeyFocus";

bool isText(const QWidget *widget)
{
    return !qobject_cast<const QAbstractButton *>(widget) && !qobject_cast<const QComboBox *>(widget)
        && !qobject_cast<const QLineEdit *>(widget) && !qobject_cast<const QAbstractScrollArea *>(widget);
}

void showRing(QWidget *widget, bool shown)
{
    if (widget->property(property).toBool() == shown)
        return;
    widget->setProperty(property, shown);
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
    // By the keys and not by the reason of the focus: a window that is shown gives its first one as Tab would.
    if (type == QEvent::MouseButtonPress)
        tabbed = false;
    if (type == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        tabbed = tabbed || key == Qt::Key_Tab || key == Qt::Key_Backtab;
    }
    if ((type != QEvent::FocusIn && type != QEvent::FocusOut) || !object->isWidgetType())
        return false;
    auto *widget = static_cast<QWidget *>(object);
    if (isText(widget))
        showRing(widget, type == QEvent::FocusIn && tabbed);
    return false;
}
