#include "gui/scale_factor.h"

#include <QDebug>
#include <QStringList>

#include <algorithm>
#include <cmath>

namespace {

constexpr double designDpi = 96.0;
constexpr double win7Step = 1.5;

double dpiScale(const ScreenShape &screen)
{
    return screen.logicalDpi / designDpi;
}

bool fits(QSize window, double scale, QSize screen)
{
    return screen.width() >= window.width() * scale && screen.height() >= window.height() * scale;
}

} // namespace

double scaleFactor(const ScreenShape &screen, QSize window, bool isWin7)
{
    double scale = dpiScale(screen);
    // Only Windows 7 keeps the step 1.5; half a step goes up everywhere else.
    if (!(isWin7 && scale == win7Step))
        scale = std::floor(scale + 0.5);
    while (scale > 1.0 && !fits(window, scale, screen.size))
        scale = isWin7 && scale == 2.0 ? win7Step : scale - 1.0;
    return std::max(1.0, scale);
}

std::optional<QString> scaleFactorsText(const std::vector<std::optional<ScreenShape>> &screens, QSize window,
                                        bool isWin7)
{
    QStringList factors;
    for (const auto &screen : screens) {
        if (!screen) {
            qDebug().noquote() << "Screen: null";
            return std::nullopt;
        }
        const double factor = scaleFactor(*screen, window, isWin7);
        factors << QString::number(factor);
        qDebug().noquote() << "Screen:" << screen->size.width() << "x" << screen->size.height()
                           << " scale:" << dpiScale(*screen) << "| QT_SCALE_FACTOR:" << factor;
    }
    return factors.join(';');
}
