#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>
#include <QVector>
#include <QWidget>

#include <functional>
#include <memory>

// One thing that a screen reader says: of what got the focus, of a window that came up, of a change.
struct Heard {
    QString kind; // focus, window, change, choice, edit, gone
    QString path; // which object
    QString role;
    QString name;
    QString description;
    QString text; // of a field; of an edit what came or went
    QStringList states;
    QStringList groups; // names of the groups that were entered with it

    // The texts that are said, in their order.
    QStringList words() const;
};

// A client of AT-SPI in a process of its own, which listens to this one, and the keyboard of the same display.
class Ear {
public:
    Ear();
    ~Ear();
    Ear(const Ear &) = delete;
    Ear &operator=(const Ear &) = delete;

    bool start();
    // With its first window the program appears on the bus.
    bool waitForProgram();

    // All that was said since the last call, after what the program does by itself has been done. What happens behind
    // `atTheEnd` is of the next call, though it may be done before this one returns.
    QVector<Heard> hear(const std::function<void()> &atTheEnd = [] {});

    // Presses a key by its name for X, and returns when the program has seen it let go.
    bool press(const QString &key);

private:
    QByteArray ask();

    QProcess listener;
    QProcess keyboard;
    std::unique_ptr<QWidget> bell;
    int rung = 1000000; // as a place in a text, which no real one is
};
