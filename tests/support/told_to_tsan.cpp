// The toolkit is not compiled with the thread sanitizer, which therefore does not see how its threads wait for each
// other: by atomic words, in code that it does not know. What the program relies on is told here, and nothing more:
//
// - A queued signal happens before the slot that it calls. Between a window and its worker that is the mutex of the
//   receiver's queue of events; here it is one mutex for each direction, held while a signal is put into the queue and
//   taken once before the slot runs.
// - What a thread did happens before another finds that it runs no more.
// - A QMutex that the program or its test locks is a lock.
//
// The definitions below stand before those of the toolkit.

#include "thproxy.h"
#include "window.h"

#include <QEvent>
#include <QMutex>
#include <QThread>

#include <dlfcn.h>
#include <mutex>

extern "C" void __tsan_acquire(void *address);
extern "C" void __tsan_release(void *address);

namespace {

std::mutex toWorker;
std::mutex toWindow;

template <typename Function>
Function theToolkits(const char *symbol)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, symbol));
}

void noteItsEnd(QThread *thread)
{
    // Directly, on the thread itself.
    QObject::connect(thread, &QThread::finished, [thread] { __tsan_release(thread); });
}

// Before each event, on the thread of its receiver.
bool beforeEvent(void **data)
{
    const auto *receiver = static_cast<QObject *>(data[0]);
    if (static_cast<QEvent *>(data[1])->type() != QEvent::MetaCall)
        return false;
    if (qobject_cast<const ThProxy *>(receiver)) {
        thread_local bool known = false;
        if (!known)
            noteItsEnd(QThread::currentThread());
        known = true;
        std::lock_guard<std::mutex> wait(toWorker);
    } else if (qobject_cast<const Window *>(receiver)) {
        std::lock_guard<std::mutex> wait(toWindow);
    }
    return false;
}

const bool told = QInternal::registerCallback(QInternal::EventNotifyCallback, beforeEvent);

} // namespace

void QMetaObject::activate(QObject *sender, const QMetaObject *type, int signal, void **arguments)
{
    using Activate = void (*)(QObject *, const QMetaObject *, int, void **);
    static const auto activate = theToolkits<Activate>("_ZN11QMetaObject8activateEP7QObjectPKS_iPPv");
    std::mutex *const queue = type == &Window::staticMetaObject ? &toWorker
        : type == &ThProxy::staticMetaObject                    ? &toWindow
                                                                : nullptr;
    if (!queue) {
        activate(sender, type, signal, arguments);
        return;
    }
    std::lock_guard<std::mutex> hold(*queue);
    activate(sender, type, signal, arguments);
}

bool QThread::isRunning() const
{
    static const auto isRunning = theToolkits<bool (*)(const QThread *)>("_ZNK7QThread9isRunningEv");
    if (isRunning(this))
        return true;
    __tsan_acquire(const_cast<QThread *>(this));
    return false;
}

bool QThread::wait(unsigned long time)
{
    static const auto wait = theToolkits<bool (*)(QThread *, unsigned long)>("_ZN7QThread4waitEm");
    if (!wait(this, time))
        return false;
    __tsan_acquire(this);
    return true;
}

void QMutex::lock()
{
    static const auto lock = theToolkits<void (*)(QMutex *)>("_ZN6QMutex4lockEv");
    lock(this);
    __tsan_acquire(this);
}

void QMutex::unlock()
{
    static const auto unlock = theToolkits<void (*)(QMutex *)>("_ZN6QMutex6unlockEv");
    __tsan_release(this);
    unlock(this);
}
