#pragma once

#include <QAbstractButton>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QTableWidget>
#include <QTextEdit>

// What a widget shows by itself, without its children; of a table all cells with their tool tips.
inline QString textIn(const QWidget *widget)
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
    QStringList cells;
    if (auto *table = qobject_cast<const QTableWidget *>(widget)) {
        for (int i = 0; i < table->rowCount() * table->columnCount(); ++i) {
            if (const QTableWidgetItem *item = table->item(i / table->columnCount(), i % table->columnCount()))
                cells << item->text() << item->toolTip();
        }
    }
    return cells.join('|');
}
