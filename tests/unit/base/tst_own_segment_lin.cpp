#include "base/own_segment.h"

#include "support/ordinary_user.h"

#include <QSharedMemory>

#include <sys/resource.h>
#include <sys/shm.h>
#include <unistd.h>

// A segment, or the file that its name comes from, is used only if this user has made it.
class TestOwnSegment : public QObject {
    Q_OBJECT

private:
    static constexpr uid_t otherUser = 65534;
    static constexpr int size = 500;
    static constexpr char key[] = "velmor_test";
    static constexpr char refusal[] = "segment of another user left alone: velmor_test";

    static QString nameFile() { return QSharedMemory(key).nativeKey(); }
    static void makeNameFile(uid_t user)
    {
        QVERIFY(writeFileBytes(nameFile(), {}));
        QCOMPARE(chown(QFile::encodeName(nameFile()).constData(), user, user), 0);
    }

private slots:
    void initTestCase()
    {
        if (geteuid() != 0)
            QSKIP("only the super-user can be two users");
        // Shared, as a folder for temporary files can be.
        QVERIFY(OrdinaryUser::letIn());
        QCOMPARE(chmod(QFile::encodeName(QDir::tempPath()).constData(), 0777), 0);
    }
    void cleanup() { QFile::remove(nameFile()); }

    void ownSegmentIsMadeAndAttached()
    {
        LogCatcher log;
        QSharedMemory first(key), second(key);
        QVERIFY(!OwnSegment::attach(second));
        QVERIFY(OwnSegment::create(first, size));
        QVERIFY(OwnSegment::attach(second));
        QVERIFY(!OwnSegment::isForeign(first));
        QVERIFY(!OwnSegment::isForeign(second));
        QCOMPARE(log.lines(), QStringList());
    }

    void nameOfAnotherIsLeftAlone()
    {
        makeNameFile(otherUser);
        LogCatcher log;
        QSharedMemory segment(key);
        QVERIFY(OwnSegment::isForeign(segment));
        QVERIFY(!OwnSegment::create(segment, size));
        QVERIFY(!OwnSegment::attach(segment));
        QVERIFY(!segment.isAttached());
        QCOMPARE(log.lines(), (QStringList { refusal, refusal }));
    }

    // Under a name of ours, made in the moment before we made it.
    void segmentOfAnotherIsLetGo()
    {
        makeNameFile(0);
        QSharedMemory foreign(key);
        {
            const OrdinaryUser user;
            QVERIFY2(foreign.create(size), qPrintable(foreign.errorString()));
        }
        LogCatcher log;
        QSharedMemory segment(key);
        QVERIFY(!OwnSegment::attach(segment));
        QVERIFY(!segment.isAttached());
        QCOMPARE(log.lines(), QStringList(refusal));
    }

    void ownerAndMakerMustBothBeThisUser_data()
    {
        QTest::addColumn<bool>("madeByAnother");
        QTest::newRow("made by another, given to us") << true;
        QTest::newRow("made by us, given to another") << false;
    }
    void ownerAndMakerMustBothBeThisUser()
    {
        QFETCH(bool, madeByAnother);
        makeNameFile(0);
        QSharedMemory foreign(key);
        if (madeByAnother) {
            const OrdinaryUser user;
            QVERIFY2(foreign.create(size), qPrintable(foreign.errorString()));
        } else {
            QVERIFY2(foreign.create(size), qPrintable(foreign.errorString()));
        }
        const int id = shmget(ftok(QFile::encodeName(nameFile()).constData(), 'Q'), 0, 0);
        shmid_ds state = {};
        QCOMPARE(shmctl(id, IPC_STAT, &state), 0);
        state.shm_perm.uid = madeByAnother ? 0 : otherUser;
        QCOMPARE(shmctl(id, IPC_SET, &state), 0);
        LogCatcher log;
        QSharedMemory segment(key);

        QVERIFY(!OwnSegment::attach(segment));

        QVERIFY(!segment.isAttached());
        QCOMPARE(log.lines(), QStringList(refusal));
    }

    void ownSegmentStaysOursWhereTheSystemTellsNothingOfIt()
    {
        QSharedMemory segment(key);
        QVERIFY(OwnSegment::create(segment, size));
        rlimit files = {};
        QCOMPARE(getrlimit(RLIMIT_NOFILE, &files), 0);
        const rlimit none { 0, files.rlim_max };

        // No further file can be opened, that of the mappings neither.
        QCOMPARE(setrlimit(RLIMIT_NOFILE, &none), 0);
        const bool foreign = OwnSegment::isForeign(segment);
        QCOMPARE(setrlimit(RLIMIT_NOFILE, &files), 0);

        QVERIFY(!foreign);
    }

    void segmentThatRefusesItselfIsForeign()
    {
        makeNameFile(otherUser);
        QSharedMemory foreign(key);
        QVERIFY2(foreign.create(size), qPrintable(foreign.errorString()));
        LogCatcher log;
        const OrdinaryUser user;
        QSharedMemory segment(key);
        QVERIFY(!OwnSegment::attach(segment));
        QVERIFY(OwnSegment::isForeign(segment));
        QCOMPARE(log.lines(), QStringList(refusal));
    }
};

VELMOR_TEST(TestOwnSegment)
#include "tst_own_segment_lin.moc"
