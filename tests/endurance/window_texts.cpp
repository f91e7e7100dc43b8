#include "endurance/window_texts.h"

#include "support/widget_text.h"

#include <QAccessible>

namespace {

// As a screen reader asks for it, which is not always what the widget was given.
QString accessibleTextOf(QWidget *widget)
{
    const QAccessibleInterface *spoken = QAccessible::queryAccessibleInterface(widget);
    if (!spoken || !spoken->isValid())
        return {};
    QString all;
    for (const QAccessible::Text kind :
         { QAccessible::Name, QAccessible::Description, QAccessible::Value, QAccessible::Help })
        all += spoken->text(kind) + ' ';
    return all;
}

} // namespace

QString windowTexts(const QWidget &window, bool onlyVisible)
{
    QString all;
    for (QWidget *widget : window.findChildren<QWidget *>()) {
        if (onlyVisible && !widget->isVisible())
            continue;
        const QString said = textIn(widget) + ' ' + widget->toolTip() + ' ' + widget->accessibleName() + ' '
            + widget->accessibleDescription() + ' ' + widget->statusTip() + ' ' + widget->whatsThis() + ' '
            + accessibleTextOf(widget);
        all += widget->objectName() + ": " + said.simplified() + '\n';
    }
    return all;
}
