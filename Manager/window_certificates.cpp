#include "window.h"

// The certificates of one container.

void Window::moveToCertInfoPage() { }
