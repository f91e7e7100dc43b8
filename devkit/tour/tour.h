#pragma once

#include "driver/driver.h"

#include <QComboBox>
#include <QPixmap>
#include <QString>
#include <QStringList>

// The window brought into one state after the other to leave a picture of each.
class Tour : public Driver {
public:
    static constexpr char reader[] = "OMNIA Smart 3121";

    // `suffix` is added to the names of the pictures: theme and density.
    Tour(QString folder, QString suffix) : target(std::move(folder)), ending(std::move(suffix)) { }

    // Lets the event loop run for so long.
    static void pause(int milliseconds);
    // Clicks what opens a page.
    bool open(const char *button, const char *page) const { return click(button) && waitForPage(page); }

    // A window with this card read, photo included; with no name, one that has just been opened. `prepare` comes
    // between the insertion and the reading.
    bool begin(const std::string &card, const std::function<void(sim::SimWorld &world)> &prepare);
    void end();

    // As readers that are known to be good, of which the window says nothing.
    static void nameReaders(const QStringList &names);

    // For a state that is a dialog: calls `open`, which runs the dialog, keeps its picture for take and closes it.
    bool showDialog(const std::function<void()> &open);

    // For a state that is another window: shows it, and keeps its picture for take.
    bool showWindow(QWidget &other);

    // For a state that is an open list.
    bool showList(QComboBox *box);

    // Leaves the picture of the window, or of the dialog that was shown last. False if it cannot be written, or if a
    // text is cut or a widget covers another.
    bool take(const QString &name);

    // All pictures of this run on one.
    bool contactSheet() const;

private:
    void keepDialog(QWidget &shown);

    QString target;
    QString ending;
    QPixmap dialog;
    QStringList dialogFaults;
    QStringList pictures;
};
