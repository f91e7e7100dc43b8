#include "key_button.h"

#include "gui/kept_icon.h"

#include <QPainter>
#include <QStyle>
#include <QStyleOptionButton>

namespace {

constexpr int keySide = 16;

}

// By what the button itself is drawn by: a pointer that lies still where it appears does not make it look pointed at.
QString KeyButton::pictureFor(QStyle::State state) const
{
    const char *name = "";
    if (!state.testFlag(QStyle::State_Enabled))
        name = "_off";
    else if (state.testFlag(QStyle::State_Sunken))
        name = "_down";
    else if (state.testFlag(QStyle::State_MouseOver))
        name = "_hover";
    return pictures.arg(name);
}

void KeyButton::paintEvent(QPaintEvent *event)
{
    QPushButton::paintEvent(event);
    if (pictures.isEmpty() || text().trimmed().isEmpty())
        return;
    QStyleOptionButton option;
    initStyleOption(&option);
    const QRect inner = style()->subElementRect(QStyle::SE_PushButtonContents, &option, this);
    const int left = inner.left() + (inner.width() - fontMetrics().horizontalAdvance(text())) / 2;
    const QRect place(left, inner.top() + (inner.height() - keySide + 1) / 2, keySide, keySide);
    QPainter painter(this);
    keptIcon(pictureFor(option.state)).paint(&painter, place);
}
