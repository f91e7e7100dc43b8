#include "support/scripted_pkcs11/worker_world.h"

#include <QSignalSpy>

void WorkerWorld::startUp()
{
    Pkcs11World::startUp();
    card->addReader(reader);
    proxy = std::make_unique<ThProxy>(pkcs11.get());
    workerThread = std::make_unique<QThread>();
    window = std::make_unique<WorkerRequests>();
    proxy->moveToThread(workerThread.get());
    using From = WorkerRequests;
    QObject::connect(window.get(), &From::getReaders, proxy.get(), &ThProxy::readers);
    QObject::connect(window.get(), &From::getCertsCount, proxy.get(), &ThProxy::certsCount);
    QObject::connect(window.get(), &From::getConteinersAndICAO, proxy.get(), &ThProxy::getConteinersAndICAO);
    QObject::connect(window.get(), &From::getPhoto, proxy.get(), &ThProxy::getPhoto);
    QObject::connect(window.get(), &From::selectDriverReader, proxy.get(), &ThProxy::selectReader);
    QObject::connect(window.get(), &From::getCerts, proxy.get(), &ThProxy::getCerts);
    QObject::connect(window.get(), &From::changePinSig, proxy.get(), &ThProxy::changePin);
    QObject::connect(window.get(), &From::unblockPinSig, proxy.get(), &ThProxy::unblockPin);
    QObject::connect(window.get(), &From::loadSsl, proxy.get(), &ThProxy::loadSsl);
    workerThread->start(QThread::InheritPriority);
}

void WorkerWorld::tearDown()
{
    constexpr int patience = 5000;
    workerThread->quit();
    QVERIFY(workerThread->wait(patience));
    proxy.reset();
    Pkcs11World::tearDown();
}

void WorkerWorld::select()
{
    QSignalSpy selected(proxy.get(), &ThProxy::selectReaderFin);
    emit window->getReaders(1, 256);
    emit window->selectDriverReader(reader);
    QTRY_COMPARE(selected.size(), 1);
    QCOMPARE(selected.first().first().toBool(), true);
    card->clearCalls();
    log->clear();
}
