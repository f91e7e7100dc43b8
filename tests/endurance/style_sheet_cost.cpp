#include "endurance/style_sheet_cost.h"

#include "endurance/own_resources.h"

#include <QCoreApplication>
#include <QLabel>
#include <QVector>

#include <algorithm>
#include <cstdio>

namespace {

// A style keeps the room in which it has parsed the longest sheet, whatever it is given afterwards. That of the
// window's cannot be taken away, so a label with a style of its own tells.
long roomToParse(const QString &sheet)
{
    const QString shortest = "color: #000000;";
    QLabel label;
    label.setStyleSheet(shortest);
    label.ensurePolished();
    const long before = OwnResources::now().heapKiB;
    for (const QString &next : { sheet, shortest }) {
        label.setStyleSheet(next);
        label.ensurePolished();
    }
    return OwnResources::now().heapKiB - before;
}

} // namespace

long costOfStyleSheets(QWidget &window)
{
    long characters = 0;
    QStringList names;
    QVector<QWidget *> grown;
    QString longestSheet;
    for (QWidget *widget : window.findChildren<QWidget *>()) {
        constexpr int longest = 1500;
        const QString sheet = widget->styleSheet();
        if (sheet.size() < longest || widget->objectName() == "mainFrame")
            continue;
        characters += sheet.size();
        names << widget->objectName() + ' ' + QString::number(sheet.size());
        grown << widget;
        longestSheet = std::max(longestSheet, sheet, [](auto &a, auto &b) { return a.size() < b.size(); });
    }
    // A copy, so that the widget's own text goes with its sheet.
    longestSheet = QString(longestSheet.constData(), longestSheet.size());
    const long before = OwnResources::now().heapKiB;
    for (QWidget *widget : grown)
        widget->setStyleSheet({});
    QCoreApplication::processEvents();
    const long cost = before - OwnResources::now().heapKiB;
    const long room = roomToParse(longestSheet);
    std::printf("meant to grow, style sheets of %ld characters: %ld KiB (%s), and %ld KiB to parse them\n", characters,
                cost, qPrintable(names.join(", ")), room);
    return cost + room;
}
