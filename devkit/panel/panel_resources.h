#pragma once

// Makes ":/panel" available: the lessons, and what the style sheets add to the program's. A second call does nothing.
void loadPanelResources();
