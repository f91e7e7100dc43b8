#pragma once

#include <QSize>
#include <QString>

#include <optional>
#include <vector>

// Which factor the toolkit itself may apply to a screen. Only one under which the main window still fits is allowed,
// and a smaller one is taken until it does.

struct ScreenShape {
    QSize size;
    double logicalDpi = 96.0;
};

// The factor of one screen, at least 1 and whole; on Windows 7 also 1.5.
double scaleFactor(const ScreenShape &screen, QSize window, bool isWin7);

// The factors of all screens in the form of QT_SCREEN_SCALE_FACTORS ("1;2"), and a log line for each screen. An empty
// entry stands for a screen that is gone: then there is no result at all.
std::optional<QString> scaleFactorsText(const std::vector<std::optional<ScreenShape>> &screens, QSize window,
                                        bool isWin7);
