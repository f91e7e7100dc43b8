#include "key_button.h"

#include "gui/kept_icon.h"

#include <QPainter>
#include <QStyle>
#include <QStyleOptionButton>

namespace {

constexpr int keySide = 16;

}

QString KeyButton::pictureNow() const
{
    const char *state = !isEnabled() ? "_off" : isDown() ? "_down" : underMouse() ? "_hover" : "";
    return pictures.arg(state);
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
    keptIcon(pictureNow()).paint(&painter, place);
}
