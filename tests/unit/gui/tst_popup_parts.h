#pragma once

#include "gui/popup.h"

#include <QApplication>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QTimer>
#include <QtTest>

#include <functional>

// What the tests of the dialog share: its parts by name, and a user who waits for it.
namespace PopupParts {

template <typename T>
T *find(const Popup &popup, const char *name)
{
    return popup.findChild<T *>(name);
}

inline QLabel *label(const Popup &popup, const char *name)
{
    return find<QLabel>(popup, name);
}

inline QPushButton *button(const Popup &popup, QDialogButtonBox::StandardButton code)
{
    return find<QDialogButtonBox>(popup, "buttonBox")->button(code);
}

inline Popup *shownPopup()
{
    const auto windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows) {
        if (auto *popup = qobject_cast<Popup *>(window); popup && popup->isVisible())
            return popup;
    }
    return nullptr;
}

// What a user does once the dialog is up. The dialog is closed in any case, so that a failed step cannot hang the test.
inline void whenShown(const std::function<void(Popup &)> &act)
{
    QTimer::singleShot(0, [act] {
        Popup *popup = shownPopup();
        QVERIFY(popup);
        QTimer::singleShot(5000, popup, [popup] { popup->done(0); });
        QVERIFY(QTest::qWaitForWindowActive(popup));
        act(*popup);
    });
}

} // namespace PopupParts
