#pragma once

#include <QWidget>

#include <random>

// Somebody who presses keys and buttons without a plan, on whatever page there is. The program's end is not asked
// for, nor that it gets out of sight.
class RestlessUser {
public:
    RestlessUser(QWidget &programWindow, std::mt19937 &lotDrawn) : window(programWindow), lot(lotDrawn) { }

    void doSomething();
    int keys() const { return keyCount; }
    int clicks() const { return clickCount; }

private:
    void pressKey();
    void clickButton();

    QWidget &window;
    std::mt19937 &lot;
    int keyCount = 0;
    int clickCount = 0;
};
