#pragma once

#include "support/testmain.h"

#include "driver/driver.h"

#include <QComboBox>
#include <QLabel>
#include <QPushButton>

// The real window on the simulated card library, as a user has it: application set up as the program does, a world of
// readers and cards, and the widgets by the names of the form.
class Flow : public Driver {
public:
    // Once a process, after the QApplication: identity, resources, fonts.
    static void setUpApplication();

    Flow();
    // Closes the window as a user would, and takes the user's table of readers away.
    ~Flow();

    QWidget *widget(const char *name) const { return find(name); }
    QLabel *label(const char *name) const { return find<QLabel>(name); }
    QPushButton *button(const char *name) const { return find<QPushButton>(name); }
    QComboBox *readersBox() const { return find<QComboBox>("cbReaders"); }
    QString title() const { return label("lMainTitle")->text(); }

    // Cryptoki functions called so far, one after the other, with their container where they have one.
    QStringList calls() const;
};
