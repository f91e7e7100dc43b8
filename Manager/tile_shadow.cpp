#include "tile_shadow.h"

#include "gui/box_shadow.h"
#include "gui/gui_base.h"
#include "ui_window.h"

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

void addWindowShadows(const Ui::Window &ui)
{
    constexpr int tileBlur = 20;
    constexpr int buttonBlur = 10;
    constexpr int photoBlur = 40;
    for (QWidget *tile : { ui.widgetBlurAuthen, ui.widgetBlurAuthor, ui.widgetBlurQualified, ui.presenceCert })
        addTileShadow(tile, tileBlur, 1);
    for (QWidget *button : { ui.bChangePin, ui.bCancel, ui.bChangePinPuk, ui.bCancel_2, ui.bWrocPin, ui.bWrocPuk })
        addTileShadow(button, buttonBlur, 1);
    addTileShadow(ui.widgetLargePhoto, photoBlur, 3);
}
