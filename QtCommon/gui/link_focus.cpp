#include "gui/link_focus.h"

#include "gui/spoken_focus.h"

#include <QAccessible>
#include <QCoreApplication>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QTextBrowser>
#include <QTextCursor>
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

void LinkSpeech::watch(QWidget *text)
{
    text->installEventFilter(this);
}

bool LinkSpeech::eventFilter(QObject *object, QEvent *event)
{
    auto *text = static_cast<QWidget *>(object);
    if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        // Once the text has gone on to the link.
        if (key == Qt::Key_Tab || key == Qt::Key_Backtab)
            QTimer::singleShot(0, text, [text] { tellLink(text); });
    }
    if (event->type() == QEvent::FocusOut && qobject_cast<QLabel *>(text))
        text->setAccessibleDescription({});
    return QObject::eventFilter(object, event);
}

// A text that has been left has nothing selected.
void LinkSpeech::tellLink(QWidget *text)
{
    if (auto *label = qobject_cast<QLabel *>(text)) {
        if (!label->hasSelectedText())
            return;
        label->setAccessibleDescription(label->selectedText());
        focusAloud(label);
    } else if (const auto *browser = qobject_cast<QTextBrowser *>(text)) {
        const QTextCursor cursor = browser->textCursor();
        if (!cursor.hasSelection())
            return;
        QAccessibleTextSelectionEvent selection(text, cursor.selectionStart(), cursor.selectionEnd());
        QAccessible::updateAccessibility(&selection);
    }
}
