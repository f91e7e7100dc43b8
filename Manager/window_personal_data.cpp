#include "window.h"

// The extended view of the holder's data.

void Window::moveToAllDataPage() { }
