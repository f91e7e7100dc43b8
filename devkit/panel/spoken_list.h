#pragma once

#include <QAccessible>
#include <QListWidget>

// A list that tells a screen reader its current line when it gets the focus. By itself it would tell its own name
// alone, and a line not before the next arrow.
class SpokenList : public QListWidget {
public:
    using QListWidget::QListWidget;

protected:
    void focusInEvent(QFocusEvent *event) override
    {
        QListWidget::focusInEvent(event);
        // After the toolkit has told the list's name.
        if (QAccessible::isActive())
            QMetaObject::invokeMethod(
                this, [this] { tellLine(); }, Qt::QueuedConnection);
    }

private:
    void tellLine()
    {
        if (!hasFocus() || currentRow() < 0)
            return;
        QAccessibleEvent focused(this, QAccessible::Focus);
        focused.setChild(currentRow());
        QAccessible::updateAccessibility(&focused);
    }
};
