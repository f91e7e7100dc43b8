#pragma once

// What a screen reader finds on the pages beside the names that the widgets have. Text that cannot have the focus is
// heard as the name of a group: it is said when the focus comes into the group. Plain widgets that have the focus are
// groups or text instead of nothing. Once, before the window is built.
void showPagesToScreenReaders();
