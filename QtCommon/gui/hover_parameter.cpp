#include "gui/hover_parameter.h"

#include <QEvent>
#include <QPushButton>
#include <QRegularExpression>
#include <QStyle>
#include <QVariant>
#include <QWidget>

namespace {

void styleHover(QWidget *widget, bool on)
{
    widget->setProperty("MouseOver", on);
    widget->style()->unpolish(widget);
    widget->style()->polish(widget);
}

void clickArrow(const QObject *frame)
{
    static const QRegularExpression arrow(".*Arrow.*", QRegularExpression::CaseInsensitiveOption);
    const auto buttons = frame->findChildren<QPushButton *>(arrow);
    // The signal itself and not click(): an arrow that is hidden or disabled works too.
    if (!buttons.isEmpty())
        emit buttons.first()->clicked(false);
}

} // namespace

bool HoverParameter::setHover(QWidget *widget, bool on)
{
    if (!widget)
        return false;
    styleHover(widget, on);
    const auto children = widget->findChildren<QWidget *>();
    for (QWidget *child : children)
        styleHover(child, on);
    return true;
}

bool HoverParameter::clear(QWidget *widget)
{
    return setHover(widget, false);
}

bool HoverParameter::eventFilter(QObject *watched, QEvent *event)
{
    auto *frame = qobject_cast<QWidget *>(watched);
    const bool enabled = watched->property("enabled").toBool();
    if (event->type() == QEvent::Leave)
        return setHover(frame, false); // whatever the frame's state: a hover must not outlive it
    if (event->type() == QEvent::Enter && enabled)
        return setHover(frame, true);
    if (event->type() == QEvent::MouseButtonDblClick && enabled)
        clickArrow(watched);
    // Everything else too, paint included; the children are not affected.
    return true;
}
