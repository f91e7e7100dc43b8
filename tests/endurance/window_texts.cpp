#include "endurance/window_texts.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QTableWidget>
#include <QTextEdit>
#include <QWidget>

namespace {

QString textIn(const QWidget *widget)
{
    if (auto *label = qobject_cast<const QLabel *>(widget))
        return label->text();
    if (auto *button = qobject_cast<const QAbstractButton *>(widget))
        return button->text();
    if (auto *field = qobject_cast<const QLineEdit *>(widget))
        return field->text();
    if (auto *text = qobject_cast<const QTextEdit *>(widget))
        return text->toPlainText();
    if (auto *box = qobject_cast<const QComboBox *>(widget))
        return box->currentText();
    QString cells;
    if (auto *table = qobject_cast<const QTableWidget *>(widget)) {
        for (int i = 0; i < table->rowCount() * table->columnCount(); ++i) {
            if (const QTableWidgetItem *item = table->item(i / table->columnCount(), i % table->columnCount()))
                cells += item->text() + ' ' + item->toolTip() + ' ';
        }
    }
    return cells;
}

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
