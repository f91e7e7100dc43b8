#pragma once

#include <optional>
#include <string>
#include <vector>

#include "simworld/world_types.h"

// A card on disk: a folder with card.conf and the files it names.
namespace sim {

// With `withValues` each object's file is read into `value`. Nothing, with a reason, if the folder holds no readable
// card.
std::optional<Card> readCard(const std::string &folder, bool withValues, std::string &error);
// Writes card.conf, and a file for each object whose value is not in a file yet.
bool writeCard(const std::string &folder, Card card, std::string &error);

// The folders in which cards are looked for, in this order; the first that holds a card of the name wins.
std::vector<std::string> cardFolders(const std::string &worldFolder, const std::string &configured);
// Folder of the card, empty if there is none. A name with a "/" in it is the folder itself.
std::string findCardFolder(const std::vector<std::string> &folders, const std::string &name);
std::vector<Card> listCards(const std::vector<std::string> &folders);

} // namespace sim
