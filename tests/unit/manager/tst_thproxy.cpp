// The card worker on a thread of its own, asked by queued signals as the window does it: readers, counts, certificates,
// and the order in which requests run.
#include "support/scripted_pkcs11/worker_world.h"

#include <QSemaphore>
#include <QSignalSpy>

namespace {

std::vector<ScriptedObject> certificates(const QByteArrayList &values)
{
    std::vector<ScriptedObject> made;
    for (const QByteArray &value : values)
        made.push_back({ CKO_CERTIFICATE, "certificate", value });
    return made;
}

} // namespace

class TestThProxy : public QObject, private WorkerWorld {
    Q_OBJECT

private slots:
    void init() { startUp(); }
    void cleanup() { tearDown(); }

    void readersStartTheLibraryAfresh();
    void readersPassFlagsWithTheHighestBit();
    void failedReadersAreTold();
    void selectionIsTold();
    void countsAreAskedInOneOrderAndToldInAnother();
    void countsOfAMissingReaderAreZero();

    void certsFollowTheirFlags_data();
    void certsFollowTheirFlags();
    void certsAreAskedInOrder();
    void onlyTheFirstCertIsKeptExceptQualified();
    void noFlagAsksNothing();

    void sslIsLoadedOnRequest();
    void everythingRunsOnTheWorker();
    void requestsRunInTheirOrderWithoutOverlap();
    void askingThreadIsNeverHeldUp();
};

void TestThProxy::readersStartTheLibraryAfresh()
{
    QSignalSpy answers(proxy.get(), &ThProxy::readersFin);

    emit window->getReaders(1, 256);
    emit window->getReaders(1, 256);

    QTRY_COMPARE(answers.size(), 2);
    for (const QList<QVariant> &answer : answers)
        QCOMPARE(answer, (QList<QVariant> { true, QStringList { reader } }));
    const QStringList listing = QStringList { "C_Initialize", "C_GetSlotList", "C_GetSlotList" }
        + QVector<QString>(5, "C_GetSlotInfo").toList();
    QCOMPARE(card->functions(), QStringList { "C_GetFunctionList" } + listing + QStringList { "C_Finalize" } + listing);
}

void TestThProxy::readersPassFlagsWithTheHighestBit()
{
    card->slotOf(3)->flags = 0x88000001u;
    QSignalSpy answers(proxy.get(), &ThProxy::readersFin);

    emit window->getReaders(int(0x88000000u), 256);
    emit window->getReaders(int(0x40000000u), 256);

    QTRY_COMPARE(answers.size(), 2);
    QCOMPARE(answers.at(0).at(1).toStringList(), QStringList { reader });
    QCOMPARE(answers.at(1).at(1).toStringList(), QStringList());
}

void TestThProxy::failedReadersAreTold()
{
    card->fail("C_Initialize", CKR_DEVICE_ERROR);
    QSignalSpy answers(proxy.get(), &ThProxy::readersFin);

    emit window->getReaders(1, 256);

    QTRY_COMPARE(answers.size(), 1);
    QCOMPARE(answers.first(), (QList<QVariant> { false, QStringList() }));
}

void TestThProxy::selectionIsTold()
{
    QSignalSpy answers(proxy.get(), &ThProxy::selectReaderFin);
    emit window->getReaders(1, 256);

    emit window->selectDriverReader(reader);
    emit window->selectDriverReader("Reader C");

    QTRY_COMPARE(answers.size(), 2);
    QCOMPARE(answers.at(0), QList<QVariant> { true });
    QCOMPARE(answers.at(1), QList<QVariant> { false });
}

void TestThProxy::countsAreAskedInOneOrderAndToldInAnother()
{
    select();
    card->slotOf(authenticationSlot)->objects = certificates({ "a" });
    card->slotOf(authorizationSlot)->objects = certificates({ "a", "b" });
    card->slotOf(presenceSlot)->objects = certificates({ "a", "b", "c" });
    card->slotOf(qualifiedSlot)->objects = certificates({ "a", "b", "c", "d" });
    QSignalSpy answers(proxy.get(), &ThProxy::certsCountFin);

    emit window->getCertsCount(reader);

    QTRY_COMPARE(answers.size(), 1);
    QCOMPARE(answers.first(), (QList<QVariant> { 1, 2, 3, 4 }));
    QCOMPARE(card->calls().filter("C_OpenSession"),
             (QStringList { "C_OpenSession 2 flags=6", "C_OpenSession 1 flags=6", "C_OpenSession 3 flags=6",
                            "C_OpenSession 4 flags=6" }));
}

void TestThProxy::countsOfAMissingReaderAreZero()
{
    select();
    QSignalSpy answers(proxy.get(), &ThProxy::certsCountFin);

    emit window->getCertsCount("Reader C");

    QTRY_COMPARE(answers.size(), 1);
    QCOMPARE(answers.first(), (QList<QVariant> { 0, 0, 0, 0 }));
}

void TestThProxy::certsFollowTheirFlags_data()
{
    QTest::addColumn<bool>("auth");
    QTest::addColumn<bool>("pres");
    QTest::addColumn<bool>("author");
    QTest::addColumn<bool>("qual");
    for (int flags = 0; flags < 16; ++flags) {
        QTest::newRow(QByteArray::number(flags, 2).rightJustified(4, '0'))
            << bool(flags & 8) << bool(flags & 4) << bool(flags & 2) << bool(flags & 1);
    }
}

void TestThProxy::certsFollowTheirFlags()
{
    QFETCH(bool, auth);
    QFETCH(bool, pres);
    QFETCH(bool, author);
    QFETCH(bool, qual);
    select();
    card->slotOf(authenticationSlot)->objects = certificates({ "A" });
    card->slotOf(presenceSlot)->objects = certificates({ "P" });
    card->slotOf(authorizationSlot)->objects = certificates({ "S" });
    card->slotOf(qualifiedSlot)->objects = certificates({ "Q" });
    QSignalSpy answers(proxy.get(), &ThProxy::getCertsFin);

    emit window->getCerts(reader, auth, pres, author, qual);

    QTRY_COMPARE(answers.size(), 1);
    QCOMPARE(answers.first().at(0).toByteArray(), QByteArray(auth ? "A" : ""));
    QCOMPARE(answers.first().at(1).toByteArray(), QByteArray(pres ? "P" : ""));
    QCOMPARE(answers.first().at(2).toByteArray(), QByteArray(author ? "S" : ""));
    QCOMPARE(answers.first().at(3).value<QByteArrayList>(), qual ? QByteArrayList { "Q" } : QByteArrayList());
    QCOMPARE(card->count("C_OpenSession"), int(auth) + int(pres) + int(author) + int(qual));
}

void TestThProxy::certsAreAskedInOrder()
{
    select();
    QSignalSpy answers(proxy.get(), &ThProxy::getCertsFin);

    emit window->getCerts(reader, true, true, true, true);

    QTRY_COMPARE(answers.size(), 1);
    QCOMPARE(card->calls().filter("C_OpenSession"),
             (QStringList { "C_OpenSession 1 flags=6", "C_OpenSession 2 flags=6", "C_OpenSession 3 flags=6",
                            "C_OpenSession 4 flags=6" }));
}

void TestThProxy::onlyTheFirstCertIsKeptExceptQualified()
{
    select();
    card->slotOf(authenticationSlot)->objects = certificates({ "A1", "A2" });
    card->slotOf(presenceSlot)->objects = certificates({ "P1", "P2" });
    card->slotOf(authorizationSlot)->objects = certificates({ "S1", "S2" });
    card->slotOf(qualifiedSlot)->objects = certificates({ "Q1", "Q2", "Q3" });
    QSignalSpy answers(proxy.get(), &ThProxy::getCertsFin);

    emit window->getCerts(reader, true, true, true, true);

    QTRY_COMPARE(answers.size(), 1);
    QCOMPARE(answers.first().at(0).toByteArray(), QByteArray("A1"));
    QCOMPARE(answers.first().at(1).toByteArray(), QByteArray("P1"));
    QCOMPARE(answers.first().at(2).toByteArray(), QByteArray("S1"));
    QCOMPARE(answers.first().at(3).value<QByteArrayList>(), (QByteArrayList { "Q1", "Q2", "Q3" }));
}

void TestThProxy::noFlagAsksNothing()
{
    select();
    card->slotOf(qualifiedSlot)->objects = certificates({ "Q" });
    QSignalSpy answers(proxy.get(), &ThProxy::getCertsFin);

    emit window->getCerts(reader, false, false, false, false);

    QTRY_COMPARE(answers.size(), 1);
    QCOMPARE(answers.first().at(0).toByteArray(), QByteArray());
    QCOMPARE(answers.first().at(1).toByteArray(), QByteArray());
    QCOMPARE(answers.first().at(2).toByteArray(), QByteArray());
    QCOMPARE(answers.first().at(3).value<QByteArrayList>(), QByteArrayList());
    QVERIFY(card->calls().isEmpty());
}

void TestThProxy::sslIsLoadedOnRequest()
{
    QSignalSpy told(proxy.get(), &ThProxy::loadSslFin);

    emit window->loadSsl();

    QTRY_VERIFY(log->has("SSL loaded"));
    const QStringList lines = log->lines();
    QVERIFY(lines.indexOf("load SSL") >= 0);
    QVERIFY(lines.indexOf("load SSL") < lines.indexOf("SSL loaded"));
    QVERIFY(card->calls().isEmpty());
    QVERIFY(told.isEmpty());
}

void TestThProxy::everythingRunsOnTheWorker()
{
    bool elsewhere = false;
    card->onCall = [this, &elsewhere](const QString &) {
        elsewhere = elsewhere || QThread::currentThread() != workerThread.get();
    };
    setTries(qualifiedSlot, CKF_USER_PIN_LOCKED);
    select();
    QSignalSpy last(proxy.get(), &ThProxy::unblockPinFin);

    emit window->getCertsCount(reader);
    emit window->getConteinersAndICAO(reader);
    emit window->getPhoto(reader);
    emit window->getCerts(reader, true, true, true, true);
    emit window->changePinSig(reader, "Authorization", "111111", "222222");
    emit window->unblockPinSig(reader, "Qualified", "24681357", "45362718");

    QTRY_COMPARE(last.size(), 1);
    QVERIFY(!elsewhere);
    card->onCall = nullptr; // the destructor, which is the window's, calls too
}

void TestThProxy::requestsRunInTheirOrderWithoutOverlap()
{
    QStringList answers;
    connect(proxy.get(), &ThProxy::readersFin, this, [&answers] { answers << "readers"; });
    connect(proxy.get(), &ThProxy::selectReaderFin, this, [&answers] { answers << "select"; });
    connect(proxy.get(), &ThProxy::certsCountFin, this, [&answers] { answers << "count"; });
    connect(proxy.get(), &ThProxy::getPhotoFin, this, [&answers] { answers << "photo"; });

    emit window->getReaders(1, 256);
    emit window->selectDriverReader(reader);
    emit window->getPhoto(reader);
    emit window->getCertsCount(reader);
    emit window->getReaders(1, 256);

    QTRY_COMPARE(answers, (QStringList { "readers", "select", "photo", "count", "readers" }));
    // Each session is used up before the next is opened, so nothing ran in between.
    QCOMPARE(card->functions().lastIndexOf("C_Finalize"), card->functions().lastIndexOf("C_FindObjectsFinal") + 1);
}

void TestThProxy::askingThreadIsNeverHeldUp()
{
    select();
    QSemaphore user;
    card->onCall = [&user](const QString &function) {
        if (function == "C_Login")
            user.acquire(); // as at a pinpad
    };
    QSignalSpy changed(proxy.get(), &ThProxy::changePinFin);
    QSignalSpy photo(proxy.get(), &ThProxy::getPhotoFin);
    bool alive = false;

    emit window->changePinSig(reader, "Qualified", "", "");
    emit window->getPhoto(reader);
    QTimer::singleShot(0, this, [&alive] { alive = true; });

    QTRY_VERIFY(alive);
    QVERIFY(changed.isEmpty());
    QVERIFY(photo.isEmpty());
    user.release();
    QTRY_COMPARE(photo.size(), 1);
    QCOMPARE(changed.size(), 1);
}

VELMOR_TEST(TestThProxy)
#include "tst_thproxy.moc"
