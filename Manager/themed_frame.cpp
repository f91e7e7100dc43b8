#include "themed_frame.h"

#include "gui/gui_base.h"

ThemedFrame::ThemedFrame(QWidget *parent) : QFrame(parent)
{
    setStyleSheet(GuiBase::instance()->file("styles-window.css"));
}
