#include "support/widget_watch.h"

#include <QCoreApplication>
#include <QEvent>
#include <QThread>

#include <cstdio>
#include <cstdlib>

namespace {

bool isOnItsThread(void **data)
{
    const auto *receiver = static_cast<QObject *>(data[0]);
    const auto *application = QCoreApplication::instance();
    if (receiver->isWidgetType() && application && QThread::currentThread() != application->thread()) {
        // Not by the log, which a test may keep to itself.
        std::fprintf(stderr, "a widget is touched outside of the window's thread: event %d to %s %s\n",
                     static_cast<QEvent *>(data[1])->type(), receiver->metaObject()->className(),
                     qPrintable(receiver->objectName()));
        std::abort();
    }
    return false;
}

} // namespace

void watchWidgets()
{
    QInternal::registerCallback(QInternal::EventNotifyCallback, isOnItsThread);
}
