#pragma once

#include "support/testmain.h"

#include "simworld/sim_world.h"
#include "window.h"

#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QStackedWidget>

#include <memory>

// The real window on the simulated card library, as a user has it: application set up as the program does, a world of
// readers and cards, and the widgets by the names of the form.
class Flow {
public:
    // Once a process, after the QApplication: identity, resources, fonts.
    static void setUpApplication();

    Flow();
    // Closes the window as a user would; without it the window's end takes a second.
    ~Flow();

    sim::SimWorld world;
    std::unique_ptr<Window> window;

    void openWindow();
    void closeWindow();

    template <typename T>
    T *find(const char *name) const
    {
        T *widget = window->findChild<T *>(name);
        if (!widget)
            qFatal("the window has no %s", name);
        return widget;
    }
    QWidget *widget(const char *name) const { return find<QWidget>(name); }
    QLabel *label(const char *name) const { return find<QLabel>(name); }
    QPushButton *button(const char *name) const { return find<QPushButton>(name); }
    QComboBox *readersBox() const { return find<QComboBox>("cbReaders"); }

    // Object name of the page shown in `pager`.
    QString page() const;
    QString title() const { return label("lMainTitle")->text(); }
    bool loaderShown() const { return !widget("loading")->isHidden(); }
    bool photoArrived() const { return !widget("bArrowICAO")->isHidden(); }

    // Puts the card into the reader and hands the window a list with it; returns when the photo has arrived.
    bool showCard(const std::string &card, const std::string &reader = "Czytnik Alfa");
    // Waits for the end of a card read that something else has started.
    bool waitForCard();

    // The user's table of readers; it goes with this object.
    void writeReadersConf(const QByteArray &content);

    // Cryptoki functions called so far, one after the other, with their container where they have one.
    QStringList calls() const;
};
