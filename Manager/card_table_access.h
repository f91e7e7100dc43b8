#pragma once

// What a screen reader finds in the table of certificate cards: the cards. By itself a table shows it cells without a
// name, for what lies in a cell as a widget is no part of the table. Once, before the window is built.
void showCardsToScreenReaders();
