#pragma once

// What the programs of the family look like: ":/images", ":/icons", ":/fonts", ":/themes" and ":/settings".
namespace Shared {

// Makes the resources available. Until then none of them exists, so that a program that only answers a question on the
// command line never touches them. Works before any QApplication; a second call does nothing.
void loadResources();

} // namespace Shared
