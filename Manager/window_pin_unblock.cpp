#include "window.h"

// The page on which a locked PIN gets a new value with the PUK, and a first PIN is set.

#include <QDebug>

void Window::unblockPin()
{
    if (busyFlag)
        return;
    qDebug().noquote() << "\nUnblock pin";
}

void Window::unblockPinFin(int res)
{
    loaderHide();
    qDebug().noquote() << "unblock Pin fin code: " << res;
}
