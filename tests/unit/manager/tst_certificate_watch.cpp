#include "certificate_watch.h"

#include "support/testmain.h"

// When the system's certificate window is taken to be there, and how long the program waits for it.
class TestCertificateWatch : public QObject {
    Q_OBJECT

private slots:
    void windowHasComeWhenThereIsOneMore_data()
    {
        QTest::addColumn<int>("before");
        QTest::addColumn<QList<int>>("counts");
        QTest::addColumn<QList<bool>>("come");
        QTest::newRow("none, then one") << 0 << QList<int> { 0, 0, 1 } << QList<bool> { false, false, true };
        QTest::newRow("one is open already") << 1 << QList<int> { 1, 2 } << QList<bool> { false, true };
        // Another one that is closed meanwhile lowers the mark, so that the wanted one still shows.
        QTest::newRow("one closes") << 2 << QList<int> { 1, 1, 2 } << QList<bool> { false, false, true };
        QTest::newRow("both close") << 2 << QList<int> { 1, 0, 1 } << QList<bool> { false, false, true };
        // A count that failed is below the mark and does not lower it.
        QTest::newRow("failure") << 1 << QList<int> { -1, 1, -1, 2 } << QList<bool> { false, false, false, true };
        QTest::newRow("failure at the click") << -1 << QList<int> { -1, 0 } << QList<bool> { false, true };
    }
    void windowHasComeWhenThereIsOneMore()
    {
        QFETCH(int, before);
        QFETCH(QList<int>, counts);
        CertificateWatch watch;
        watch.begin(before);

        QList<bool> come;
        for (const int count : counts)
            come << watch.hasCome(count);

        QTEST(come, "come");
    }

    void fortyOnePollsFollowTheFirst()
    {
        CertificateWatch watch;
        for (int round = 0; round < 2; ++round) {
            watch.begin(0);
            int polls = 0;
            while (watch.mayTryAgain())
                ++polls;
            QCOMPARE(polls, 41);
            QVERIFY(!watch.mayTryAgain());
        }
    }
};

VELMOR_TEST(TestCertificateWatch)
#include "tst_certificate_watch.moc"
