#include "base/own_environment.h"

#include "support/testmain.h"

using OwnEnvironment::Child;

// Programs that this one starts find the environment as it was before the program set what is for itself alone.
class TestOwnEnvironment : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        qunsetenv("VELMOR_TEST_ABSENT");
        qputenv("VELMOR_TEST_CHOSEN", "by the user");
        OwnEnvironment::set("VELMOR_TEST_ABSENT", "1");
        OwnEnvironment::set("VELMOR_TEST_CHOSEN", "by us");
    }
    void cleanup()
    {
        OwnEnvironment::restore("VELMOR_TEST_ABSENT");
        OwnEnvironment::restore("VELMOR_TEST_CHOSEN");
    }

    void programItselfHasItsOwn()
    {
        QCOMPARE(qgetenv("VELMOR_TEST_ABSENT"), QByteArray("1"));
        QCOMPARE(qgetenv("VELMOR_TEST_CHOSEN"), QByteArray("by us"));
    }

    void childrenGetWhatWasBefore_data()
    {
        QTest::addColumn<bool>("sibling");
        QTest::newRow("sibling") << true;
        QTest::newRow("stranger") << false;
    }
    void childrenGetWhatWasBefore()
    {
        QFETCH(bool, sibling);
        qputenv("VELMOR_TEST_OTHER", "kept");

        const QProcessEnvironment environment = OwnEnvironment::forChild(sibling ? Child::Sibling : Child::Stranger);

        QVERIFY(!environment.contains("VELMOR_TEST_ABSENT"));
        QCOMPARE(environment.value("VELMOR_TEST_CHOSEN"), QString("by the user"));
        QCOMPARE(environment.value("VELMOR_TEST_OTHER"), QString("kept"));
    }

    // In the folder of temporary files lie the segments by which the family talks.
    void siblingsAloneShareTheFolderOfTemporaryFiles()
    {
        const QByteArray before = qgetenv("TMPDIR");
        OwnEnvironment::set("TMPDIR", "/of/the/family");
        const QProcessEnvironment sibling = OwnEnvironment::forChild(Child::Sibling);
        const QProcessEnvironment stranger = OwnEnvironment::forChild(Child::Stranger);
        OwnEnvironment::restore("TMPDIR");

        QCOMPARE(sibling.value("TMPDIR"), QString("/of/the/family"));
        QCOMPARE(stranger.value("TMPDIR").toLocal8Bit(), before);
        QCOMPARE(qgetenv("TMPDIR"), before);
    }

    void lentEnvironmentComesBack()
    {
        {
            const OwnEnvironment::Lent lent;
            QVERIFY(!qEnvironmentVariableIsSet("VELMOR_TEST_ABSENT"));
            QCOMPARE(qgetenv("VELMOR_TEST_CHOSEN"), QByteArray("by the user"));
        }
        QCOMPARE(qgetenv("VELMOR_TEST_ABSENT"), QByteArray("1"));
        QCOMPARE(qgetenv("VELMOR_TEST_CHOSEN"), QByteArray("by us"));
    }

    void whatWasBeforeTheFirstSettingComesBack()
    {
        OwnEnvironment::set("VELMOR_TEST_CHOSEN", "by us again");
        QCOMPARE(qgetenv("VELMOR_TEST_CHOSEN"), QByteArray("by us again"));
        OwnEnvironment::restore("VELMOR_TEST_CHOSEN");
        QCOMPARE(qgetenv("VELMOR_TEST_CHOSEN"), QByteArray("by the user"));
        OwnEnvironment::restore("VELMOR_TEST_ABSENT");
        QVERIFY(!qEnvironmentVariableIsSet("VELMOR_TEST_ABSENT"));
        // What was never set by the program stays as it is, and what it has given back is its own no more.
        qputenv("VELMOR_TEST_CHOSEN", "by the user again");
        OwnEnvironment::restore("VELMOR_TEST_CHOSEN");
        QCOMPARE(qgetenv("VELMOR_TEST_CHOSEN"), QByteArray("by the user again"));
    }
};

VELMOR_TEST(TestOwnEnvironment)
#include "tst_own_environment.moc"
