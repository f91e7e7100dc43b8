#pragma once

#include <QAbstractEventDispatcher>
#include <QList>

// The waits, in milliseconds, that an action arms on its thread: each a timer that runs once. They are read, and not
// waited for.
template <typename Action>
QList<int> waitsArmedBy(Action action)
{
    const auto armed = [] {
        QAbstractEventDispatcher *dispatcher = QAbstractEventDispatcher::instance();
        QList<int> waits;
        // The toolkit makes such a timer a child of the dispatcher.
        for (QObject *timer : dispatcher->children()) {
            for (const QAbstractEventDispatcher::TimerInfo &info : dispatcher->registeredTimers(timer))
                waits << info.interval;
        }
        return waits;
    };
    const QList<int> before = armed();
    action();
    QList<int> waits = armed();
    for (const int wait : before)
        waits.removeOne(wait);
    return waits;
}
