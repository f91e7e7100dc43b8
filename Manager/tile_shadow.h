#pragma once

class QWidget;

namespace Ui {
class Window;
}

// The grey shadow of tiles, cards and buttons, in pixels of blur and offset. It is there in every theme, but shows in
// the light one alone: on a dark page its grey would glow.
void addTileShadow(QWidget *widget, int blur, int offset);

// Those of the tiles, of the buttons and of the large photo; the holder's tile has none.
void addWindowShadows(const Ui::Window &ui);
