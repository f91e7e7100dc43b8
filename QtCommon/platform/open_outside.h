#pragma once

class QUrl;

// Hands an address to the program that the user's desktop has for it, which gets nothing of what this program has set
// in its environment for itself. False if there is none.
bool openOutside(const QUrl &address);
