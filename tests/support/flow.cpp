#include "support/flow.h"

#include "app/app.h"
#include "base/common.h"
#include "base/platform.h"
#include "shared.h"

#include <QDir>
#include <QFileInfo>
#include <QThread>

#include <atomic>

namespace {

constexpr int patience = 10000;
constexpr int idleWorkerAnswers = 300;

QtMessageHandler outerHandler = nullptr;
std::atomic<QThread *> worker;

void noteWorker(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (message == "load SSL")
        worker = QThread::currentThread();
    if (outerHandler)
        outerHandler(type, context, message);
}

// The thread of the card worker, which tells itself by a line of its own in the log; null if it is at work.
QThread *idleWorkerOf(Window &window)
{
    worker = nullptr;
    outerHandler = qInstallMessageHandler(noteWorker);
    emit window.loadSsl();
    const bool answered = QTest::qWaitFor([] { return worker != nullptr; }, idleWorkerAnswers);
    qInstallMessageHandler(outerHandler);
    return answered ? worker.load() : nullptr;
}

} // namespace

void Flow::setUpApplication()
{
    App::instance()->init("Menedżer", VELMOR_TEST_ROOT, "x86_64", "Manager");
    QCoreApplication::setApplicationVersion("4.3.5");
    Shared::loadResources();
    App::instance()->initQApp();
}

Flow::Flow()
{
    world.reset();
}

Flow::~Flow()
{
    world.clearFaults();
    world.release();
    closeWindow();
    QFile::remove(Platform::readersConfPath("velmor"));
}

void Flow::openWindow()
{
    window = std::make_unique<Window>();
    window->show();
}

void Flow::closeWindow()
{
    if (!window)
        return;
    // With the page of a pinpad operation shown the program refuses to quit.
    find<QStackedWidget>("pager")->setCurrentWidget(widget("pageHome"));
    QThread *const idle = idleWorkerOf(*window);
    window->quitClicked();
    // What the window looks for after half a second is there at once if nothing was left to do.
    if (idle && idle->wait(patience))
        window->closeWithTheards();
    QTRY_VERIFY_WITH_TIMEOUT(!window->isVisible(), patience);
    window.reset();
}

QString Flow::page() const
{
    return find<QStackedWidget>("pager")->currentWidget()->objectName();
}

bool Flow::showCard(const std::string &card, const std::string &reader)
{
    if (!world.insertCard(reader, card))
        qFatal("%s", world.error().c_str());
    if (!window)
        openWindow();
    window->loadedReaders({ QString::fromStdString(reader) });
    return waitForCard();
}

bool Flow::waitForCard()
{
    return QTest::qWaitFor([this] { return !loaderShown() && (photoArrived() || page() == "pageNoElectricLayer"); },
                           patience);
}

void Flow::writeReadersConf(const QByteArray &content)
{
    const QString path = Platform::readersConfPath("velmor");
    QDir().mkpath(QFileInfo(path).path());
    if (!writeFileBytes(path, content))
        qFatal("cannot write %s", qPrintable(path));
}

QStringList Flow::calls() const
{
    QStringList result;
    for (const sim::TraceEntry &entry : world.trace()) {
        QString call = QString::fromStdString(entry.function);
        const auto container = entry.arguments.find("container");
        if (container != entry.arguments.end() && !container->second.empty())
            call += ' ' + QString::fromStdString(container->second);
        result << call;
    }
    return result;
}
