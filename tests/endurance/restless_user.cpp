#include "endurance/restless_user.h"

#include <QAbstractButton>
#include <QApplication>
#include <QPointer>
#include <QTest>

void RestlessUser::doSomething()
{
    if (QWidget *popup = QApplication::activePopupWidget()) {
        popup->close();
        return;
    }
    if (lot() % 4 == 0)
        clickButton();
    else
        pressKey();
}

void RestlessUser::pressKey()
{
    static const Qt::Key choice[] = { Qt::Key_Tab,  Qt::Key_Tab,    Qt::Key_Backtab,   Qt::Key_Space, Qt::Key_Return,
                                      Qt::Key_1,    Qt::Key_2,      Qt::Key_3,         Qt::Key_4,     Qt::Key_8,
                                      Qt::Key_Down, Qt::Key_Up,     Qt::Key_Left,      Qt::Key_Right, Qt::Key_PageDown,
                                      Qt::Key_Home, Qt::Key_Escape, Qt::Key_Backspace, Qt::Key_A,     Qt::Key_F10 };
    const QPointer<QWidget> focus = QApplication::focusWidget() ? QApplication::focusWidget() : &window;
    const Qt::Key key = choice[lot() % std::size(choice)];
    const bool presses = key == Qt::Key_Space || key == Qt::Key_Return;
    if (presses && (focus->objectName() == "bClose" || focus->objectName() == "bMinimalize"))
        return;
    ++keyCount;
    QTest::keyClick(focus, key);
}

void RestlessUser::clickButton()
{
    QList<QAbstractButton *> buttons;
    for (QAbstractButton *button : window.findChildren<QAbstractButton *>()) {
        if (button->isVisible() && button->isEnabled() && button->objectName() != "bClose"
            && button->objectName() != "bMinimalize")
            buttons << button;
    }
    if (buttons.isEmpty())
        return;
    ++clickCount;
    buttons[int(lot() % unsigned(buttons.size()))]->click();
}
