#include "carried_answers.h"

#include "support/scripted_pkcs11/pkcs11_world.h"
#include "support/watched_free.h"
#include "thproxy.h"

// What an answer of the card worker carries is overwritten by whoever lets go of it last: the worker itself, or the
// queue of a receiver.
class TestThProxyCarriedAnswers : public QObject, private Pkcs11World {
    Q_OBJECT

private:
    std::unique_ptr<ThProxy> worker;

    static std::vector<ScriptedObject> certificates(const char *first, const char *second)
    {
        return { { CKO_CERTIFICATE, "certificate", first }, { CKO_CERTIFICATE, "certificate", second } };
    }
    static void everyBlockWentOverwritten(int blocks)
    {
        QCOMPARE(WatchedFree::watched(), blocks);
        QCOMPARE(WatchedFree::freed(), blocks);
        QCOMPARE(WatchedFree::overwritten(), blocks);
    }
    // Watched, and held by nobody but what the caller makes of it.
    static QByteArray watched(const char *text)
    {
        QByteArray bytes(text);
        WatchedFree::watch(bytes);
        return bytes;
    }

private slots:
    void initTestCase()
    {
        if (!VELMOR_FREE_IS_WATCHED)
            QSKIP("The sanitizer has a free() of its own");
    }
    void init()
    {
        startUp();
        insert(CKF_TOKEN_INITIALIZED | CKF_USER_PIN_INITIALIZED);
        worker = std::make_unique<ThProxy>(pkcs11.get());
        WatchedFree::forgetAll();
    }
    void cleanup()
    {
        worker.reset();
        tearDown();
    }

    // Else all that follows would be silent.
    void whatIsLeftIsSeen()
    {
        {
            const QByteArray bytes = watched("left behind");
        }
        QCOMPARE(WatchedFree::freed(), 1);
        QCOMPARE(WatchedFree::overwritten(), 0);
    }

    void workerOverwritesTheDataGroups()
    {
        objects("eMRTD") = { { CKO_DATA, "DG1", "the first" },
                             { CKO_DATA, "DG11", "the eleventh" },
                             { CKO_DATA, "DG12", "the twelfth" },
                             { CKO_DATA, "DG13", "the thirteenth" } };
        connect(worker.get(), &ThProxy::getConteinersAndICAOFin, this,
                [](const QString &, const QString &, const QString &, int, int, int, int, bool, int,
                   const QByteArray &dg1, const QByteArray &dg11, const QByteArray &dg12, const QByteArray &dg13) {
                    for (const QByteArray &group : { dg1, dg11, dg12, dg13 })
                        WatchedFree::watch(group);
                });

        worker->getConteinersAndICAO(reader);

        everyBlockWentOverwritten(4);
    }

    void workerOverwritesThePhoto()
    {
        objects("eMRTD") = { { CKO_DATA, "DG2", "the photo" } };
        connect(worker.get(), &ThProxy::getPhotoFin, this, [](const QByteArray &dg2) { WatchedFree::watch(dg2); });

        worker->getPhoto(reader);

        everyBlockWentOverwritten(1);
    }

    void workerOverwritesTheCertificates()
    {
        objects("Authentication") = certificates("authentication", "another");
        objects("Presence") = certificates("presence", "another");
        objects("Authorization") = certificates("authorization", "another");
        objects("Qualified") = certificates("qualified", "second");
        connect(worker.get(), &ThProxy::getCertsFin, this,
                [](const QByteArray &authen, const QByteArray &presence, const QByteArray &author,
                   const QByteArrayList &qual) {
                    for (const QByteArray &certificate : QByteArrayList { authen, presence, author } + qual)
                        WatchedFree::watch(certificate);
                });

        worker->getCerts(reader, true, true, true, true);

        everyBlockWentOverwritten(5);
    }

    void receiverOverwritesWhatItsQueueCarries_data()
    {
        QTest::addColumn<QString>("answer");
        QTest::addColumn<int>("blocks");
        QTest::newRow("data groups") << "groups" << 4;
        QTest::newRow("photo") << "photo" << 1;
        QTest::newRow("certificates") << "certificates" << 5;
    }
    void receiverOverwritesWhatItsQueueCarries()
    {
        QFETCH(QString, answer);
        QFETCH(int, blocks);
        QObject receiver;
        wipeCarriedAnswers(worker.get(), &receiver);

        if (answer == "groups")
            emit worker->getConteinersAndICAOFin({}, {}, {}, 3, 3, 3, 3, false, 0, watched("the first"),
                                                 watched("the eleventh"), watched("the twelfth"),
                                                 watched("the thirteenth"));
        else if (answer == "photo")
            emit worker->getPhotoFin(watched("the photo"));
        else
            emit worker->getCertsFin(watched("authentication"), watched("presence"), watched("authorization"),
                                     { watched("qualified"), watched("second") });
        QCOMPARE(WatchedFree::freed(), 0);
        QCoreApplication::sendPostedEvents(&receiver);

        everyBlockWentOverwritten(blocks);
    }
};

// A program of its own, for the free() in it.
int main(int argc, char *argv[])
{
    TestHome home;
    QApplication application(argc, argv);
    TestThProxyCarriedAnswers test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_thproxy_carried_answers_linux.moc"
