#pragma once

#include <QAbstractButton>
#include <QAbstractScrollArea>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QStyleOptionButton>
#include <QStyleOptionComboBox>
#include <QTextDocument>
#include <QWidget>

// A walk over all that is visible in a window, which answers what a person would call broken: a text that is cut, a
// widget over another, a widget that reaches out of its parent. One line a fault; nothing is drawn for it.
namespace WidgetWalk {

inline QString nameOf(const QWidget *widget)
{
    const QString name = widget->objectName();
    return name.isEmpty() ? QString(widget->metaObject()->className()) : name;
}

inline QString plain(const QString &text)
{
    if (!Qt::mightBeRichText(text))
        return text;
    QTextDocument document;
    document.setHtml(text);
    return document.toPlainText();
}

// What scrolls may be cut: that is what the bars are for.
inline bool scrolls(const QWidget *widget)
{
    for (const QWidget *parent = widget->parentWidget(); parent && !widget->isWindow();
         parent = parent->parentWidget()) {
        if (qobject_cast<const QAbstractScrollArea *>(parent))
            return true;
    }
    return false;
}

// The room that a widget gives to its text and what the text needs; empty for one without.
struct TextRoom {
    QSize needed;
    QSize given;
};

inline TextRoom roomOf(const QLabel *label)
{
    if (label->text().isEmpty())
        return {};
    if (label->wordWrap())
        return { { label->minimumSizeHint().width(), label->heightForWidth(label->width()) }, label->size() };
    return { label->sizeHint(), label->size() };
}

inline TextRoom roomOf(const QAbstractButton *button)
{
    const QString text = button->text();
    if (text.isEmpty())
        return {};
    QStyleOptionButton option;
    option.initFrom(button);
    const auto part =
        qobject_cast<const QCheckBox *>(button) ? QStyle::SE_CheckBoxContents : QStyle::SE_PushButtonContents;
    return { button->fontMetrics().size(Qt::TextShowMnemonic, text),
             button->style()->subElementRect(part, &option, button).size() };
}

inline TextRoom roomOf(const QComboBox *box)
{
    QStyleOptionComboBox option;
    option.initFrom(box);
    option.editable = box->isEditable();
    const QRect field = box->style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, box);
    // One pixel on each side of the text is the style's.
    return { { box->fontMetrics().horizontalAdvance(box->currentText()) + 2, box->fontMetrics().height() },
             field.size() };
}

inline TextRoom roomOfText(const QWidget *widget)
{
    if (const auto *label = qobject_cast<const QLabel *>(widget))
        return roomOf(label);
    if (const auto *button = qobject_cast<const QAbstractButton *>(widget))
        return roomOf(button);
    if (const auto *box = qobject_cast<const QComboBox *>(widget))
        return roomOf(box);
    if (const auto *line = qobject_cast<const QLineEdit *>(widget))
        return { { 0, line->fontMetrics().height() }, line->contentsRect().size() };
    return {};
}

// Where a widget's own content stands, in the coordinates of the window. Of a text this is the letters' place: the
// empty parts of a label may lie over its neighbours.
inline QRect contentOf(const QWidget *widget, const QWidget *window)
{
    QRect rect = widget->rect();
    if (const auto *label = qobject_cast<const QLabel *>(widget)) {
        if (label->text().isEmpty()) {
            const QSize picture = label->pixmap(Qt::ReturnByValue).size() / label->devicePixelRatioF();
            if (picture.isEmpty())
                return {};
        } else {
            const int flags = int(label->alignment()) | (label->wordWrap() ? Qt::TextWordWrap : 0);
            rect = label->fontMetrics().boundingRect(label->contentsRect(), flags, plain(label->text()));
            // Above the letters and below them a line has air.
            const int air = label->fontMetrics().height() / 6;
            rect = (rect & label->rect()).adjusted(0, air, 0, -air);
        }
    } else if (!qobject_cast<const QAbstractButton *>(widget) && !qobject_cast<const QComboBox *>(widget)
               && !qobject_cast<const QLineEdit *>(widget) && !qobject_cast<const QAbstractScrollArea *>(widget)) {
        return {};
    }
    return { widget->mapTo(window, rect.topLeft()), rect.size() };
}

inline QString sizeText(QSize size)
{
    return QString("%1x%2").arg(size.width()).arg(size.height());
}

inline QString rectText(QRect rect)
{
    return QString("%1,%2 %3").arg(rect.x()).arg(rect.y()).arg(sizeText(rect.size()));
}

inline QList<const QWidget *> visibleIn(const QWidget *window)
{
    QList<const QWidget *> all;
    for (const QWidget *widget : window->findChildren<QWidget *>()) {
        if (widget->isVisible() && !widget->isWindow() && widget->window() == window->window() && !scrolls(widget))
            all << widget;
    }
    return all;
}

inline QStringList faults(const QWidget *window)
{
    QStringList found;
    QList<QPair<const QWidget *, QRect>> contents;
    for (const QWidget *widget : visibleIn(window)) {
        const TextRoom room = roomOfText(widget);
        if (room.needed.width() > room.given.width() || room.needed.height() > room.given.height())
            found << QString("%1 is cut: needs %2, has %3")
                         .arg(nameOf(widget), sizeText(room.needed), sizeText(room.given));
        const QRect around = widget->parentWidget()->rect();
        if (!around.contains(widget->geometry()))
            found << QString("%1 (%2) reaches out of %3 (%4)")
                         .arg(nameOf(widget), rectText(widget->geometry()), nameOf(widget->parentWidget()),
                              sizeText(around.size()));
        const QRect content = contentOf(widget, window);
        if (!content.isEmpty())
            contents << qMakePair(widget, content);
    }
    for (int i = 0; i < contents.size(); ++i) {
        for (int j = i + 1; j < contents.size(); ++j) {
            const auto &[first, here] = contents[i];
            const auto &[second, there] = contents[j];
            if (!here.intersects(there) || first->isAncestorOf(second) || second->isAncestorOf(first))
                continue;
            found << QString("%1 lies over %2").arg(nameOf(second), nameOf(first));
        }
    }
    return found;
}

} // namespace WidgetWalk
