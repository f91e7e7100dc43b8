#pragma once

// From here on an event that comes to a widget on another thread than the window's ends the test: whatever changes a
// widget sends it one. Once a process, after the application.
void watchWidgets();
