#include "tile_shadow.h"

#include "gui/box_shadow.h"
#include "gui/gui_base.h"

#include <QWidget>

namespace {

constexpr int tileRadius = 12;

}

void addTileShadow(QWidget *widget, int blur, int offset)
{
    auto *shadow = new BoxShadow(widget, tileRadius);
    shadow->setColor(QColor(186, 187, 188));
    shadow->setBlurRadius(blur);
    shadow->setOffset(offset, offset);
    shadow->setEnabled(GuiBase::instance()->theme() == "light");
    widget->setGraphicsEffect(shadow);
}
