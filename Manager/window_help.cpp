#include "window.h"

// The help page and what leads out of the program from it.

#include "web_addresses.h"

#include <QDebug>
#include <QDesktopServices>
#include <QUrl>

void Window::moveToHelpPage()
{
    qDebug().noquote() << "show help";
}

void Window::openHelpWebsite()
{
    QDesktopServices::openUrl(QUrl(WebAddresses::help));
}
