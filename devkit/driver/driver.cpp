#include "driver/driver.h"

#include "app/app.h"
#include "app/version.h"
#include "base/common.h"
#include "base/platform.h"
#include "shared.h"

#include <QAbstractButton>
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFileInfo>
#include <QStackedWidget>
#include <QThread>

#include <atomic>

namespace {

constexpr int idleWorkerAnswers = 300;

// Both threads log while the handler changes.
std::atomic<QtMessageHandler> outerHandler = nullptr;
std::atomic<QThread *> worker;

void noteWorker(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (message == "load SSL")
        worker = QThread::currentThread();
    if (const QtMessageHandler outer = outerHandler)
        outer(type, context, message);
}

bool runUntil(const std::function<bool()> &condition, int milliseconds)
{
    const QDeadlineTimer deadline(milliseconds);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QThread::msleep(5);
    }
    return true;
}

// The thread of the card worker, which tells itself by a line of its own in the log; null if it is at work.
QThread *idleWorkerOf(Window &window)
{
    worker = nullptr;
    outerHandler = qInstallMessageHandler(noteWorker);
    emit window.loadSsl();
    const bool answered = runUntil([] { return worker != nullptr; }, idleWorkerAnswers);
    qInstallMessageHandler(outerHandler);
    return answered ? worker.load() : nullptr;
}

} // namespace

void Driver::setUpApplication()
{
    QCoreApplication::setApplicationVersion(Version::shortText);
    Shared::loadResources();
    App::instance()->initQApp();
}

QString Driver::readersConfPath()
{
    return Platform::readersConfPath(Common::productName());
}

void Driver::writeReadersConf(const QByteArray &content)
{
    const QString path = readersConfPath();
    QDir().mkpath(QFileInfo(path).path());
    if (!writeFileBytes(path, content))
        qFatal("cannot write %s", qPrintable(path));
}

QString Driver::page() const
{
    return find<QStackedWidget>("pager")->currentWidget()->objectName();
}

bool Driver::waitFor(const std::function<bool()> &condition)
{
    return runUntil(condition, patience);
}

bool Driver::waitForPage(const QString &name) const
{
    return waitFor([&] { return !loaderShown() && page() == name; });
}

bool Driver::waitForCard() const
{
    return waitFor([this] { return !loaderShown() && (photoArrived() || page() == "pageNoElectricLayer"); });
}

bool Driver::waitForPad(int calls) const
{
    return waitFor([&] { return world.waitingCalls() == calls; });
}

bool Driver::click(const char *button) const
{
    auto *widget = find<QAbstractButton>(button);
    const bool possible = widget->isVisible() && widget->isEnabled();
    if (possible)
        widget->click();
    return possible;
}

void Driver::openWindow()
{
    window = std::make_unique<Window>();
    window->show();
}

void Driver::closeWindow()
{
    if (!window)
        return;
    // With the page of a pinpad operation shown the program refuses to quit.
    find<QStackedWidget>("pager")->setCurrentWidget(find("pageHome"));
    QThread *const idle = idleWorkerOf(*window);
    window->quitClicked();
    // What the window looks for after half a second is there at once if nothing was left to do.
    if (idle && idle->wait(patience))
        window->closeWithTheards();
    if (!waitFor([this] { return !window->isVisible(); }))
        qFatal("the window does not close");
    window.reset();
}

bool Driver::showCard(const std::string &card, const std::string &reader,
                      const std::function<void(sim::SimWorld &world)> &prepare)
{
    if (!world.insertCard(reader, card))
        qFatal("%s", world.error().c_str());
    if (prepare)
        prepare(world);
    if (!window)
        openWindow();
    window->loadedReaders({ QString::fromStdString(reader) });
    return waitForCard();
}
