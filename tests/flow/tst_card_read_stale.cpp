#include "support/flow.h"

#include "base/ipc_msg.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QDeadlineTimer>
#include <QThread>

// Answers of the worker that come when their card has gone: nothing of its holder may appear again.
class TestCardReadStale : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<Flow> flow;

    static QStringList labels() { return { "lNumIdVal", "lCommonNameVal", "lsurnameVal", "lExpDateVal" }; }
    QString text(const QString &label) const { return flow->label(label.toLatin1().constData())->text(); }
    QImage photo() const { return flow->label("lPhoto")->pixmap(Qt::ReturnByValue).toImage(); }

    // The places at which the read of a card can be held, from the first answer of its chain to the last.
    static void places()
    {
        QTest::addColumn<QByteArray>("function");
        QTest::addColumn<QByteArray>("container");
        QTest::addColumn<int>("nth");
        const struct {
            const char *place;
            const char *function;
            const char *container;
            int nth;
        } rows[] = {
            { "selection", "C_GetTokenInfo", "", 1 },
            { "counts", "C_FindObjectsInit", sim::Qualified, 1 },
            { "data groups", "C_FindObjectsInit", sim::Emrtd, 1 },
            { "certificates", "C_FindObjectsInit", sim::Qualified, 2 },
            { "photo", "C_FindObjectsInit", sim::Emrtd, 2 },
        };
        for (const auto &row : rows)
            QTest::newRow(row.place) << QByteArray(row.function) << QByteArray(row.container) << row.nth;
    }

    void holdTheReadOfTheCard()
    {
        QFETCH(QByteArray, function);
        QFETCH(QByteArray, container);
        QFETCH(int, nth);
        QVERIFY(flow->world.block(function.toStdString(), container.toStdString(), nth));
        flow->window->loadAll();
        QTRY_COMPARE_WITH_TIMEOUT(flow->world.waitingCalls(), 1, 10000);
    }

    void tellReaders(const QByteArray &list)
    {
        IpcMsg message { { "readers", list } };
        message.setTo("velmor_manager");
        flow->window->recvIpcMsg(message);
    }

    // Until the worker has nothing left to do: an answer may lead to a request, so more often than a chain is long.
    void letTheWorkerFinish()
    {
        constexpr int longestChain = 8;
        for (int i = 0; i < longestChain; ++i) {
            LogCatcher log;
            emit flow->window->loadSsl();
            QTRY_VERIFY_WITH_TIMEOUT(log.has("SSL loaded"), 10000);
            QCoreApplication::processEvents();
        }
    }

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init() { flow = std::make_unique<Flow>(); }
    void cleanup() { flow.reset(); }

    void cardThatHasGoneStaysGone_data() { places(); }
    void cardThatHasGoneStaysGone()
    {
        QVERIFY(flow->showCard("anna"));
        const QImage ofAnna = photo();
        holdTheReadOfTheCard();

        flow->window->loadedReaders({}, "NO_CARD");
        flow->world.release();
        letTheWorkerFinish();

        for (const QString &label : labels())
            QCOMPARE(text(label), QString());
        QCOMPARE(flow->widget("widgetBlurICAO")->accessibleName(), QString());
        QVERIFY(photo() != ofAnna);
        QCOMPARE(flow->page(), QString("pageDisconected"));
        QVERIFY(!flow->loaderShown());
    }

    void nextCardShowsNothingOfTheOneBefore_data() { places(); }
    void nextCardShowsNothingOfTheOneBefore()
    {
        QVERIFY(flow->showCard("anna"));
        const QImage ofAnna = photo();
        QStringList before;
        for (const QString &label : labels())
            before << text(label);
        QVERIFY(flow->world.insertCard("Czytnik Beta", "jan"));
        holdTheReadOfTheCard();

        flow->window->loadedReaders({ "Czytnik Beta" });
        flow->world.release();
        letTheWorkerFinish();
        QTRY_VERIFY(flow->photoArrived() && !flow->loaderShown());

        const QString holder = QString::fromStdString(flow->world.card("jan")->holder);
        QVERIFY2(holder.endsWith(text("lsurnameVal")), qPrintable(text("lsurnameVal")));
        const QString spoken = flow->widget("widgetBlurICAO")->accessibleName();
        for (int i = 0; i < before.size(); ++i) {
            QVERIFY(!text(labels()[i]).isEmpty());
            QVERIFY2(text(labels()[i]) != before[i], qPrintable(labels()[i]));
            QVERIFY2(!spoken.contains(before[i]), qPrintable(spoken));
        }
        QVERIFY(!photo().isNull());
        QVERIFY(photo() != ofAnna);
    }

    void namesOfTheOneBeforeDoNotStandOnACardWithoutCertificates_data() { places(); }
    void namesOfTheOneBeforeDoNotStandOnACardWithoutCertificates()
    {
        QVERIFY(flow->showCard("anna"));
        QVERIFY(flow->world.insertCard("Czytnik Beta", "no-certificates"));
        holdTheReadOfTheCard();

        flow->window->loadedReaders({ "Czytnik Beta" });
        flow->world.release();
        letTheWorkerFinish();

        QTRY_COMPARE(flow->page(), QString("pageNoElectricLayer"));
        for (const QString &label : labels())
            QCOMPARE(text(label), QString());
    }

    void photoOfTheOneBeforeIsNotShownWhileTheNextIsRead()
    {
        flow->world.insertCard("Czytnik Alfa", "anna");
        flow->world.insertCard("Czytnik Beta", "jan");
        flow->openWindow();
        flow->window->loadedReaders({ "Czytnik Alfa", "Czytnik Beta" });
        QVERIFY(flow->waitForCard());
        const QImage ofAnna = photo();
        QVERIFY(!ofAnna.isNull());
        flow->world.block("C_FindObjectsInit", sim::Emrtd, 2);

        flow->readersBox()->setCurrentIndex(1);
        flow->window->selectReader();
        QVERIFY(photo().isNull());

        QTRY_COMPARE_WITH_TIMEOUT(flow->world.waitingCalls(), 1, 10000);
        QVERIFY(!flow->loaderShown());
        QVERIFY(photo().isNull());
        flow->world.release();
        QTRY_VERIFY(flow->photoArrived());
        QVERIFY(!photo().isNull());
        QVERIFY(photo() != ofAnna);
    }

    void nothingOfTheOneBeforeStaysOnACardWithoutCertificates_data() { places(); }
    void nothingOfTheOneBeforeStaysOnACardWithoutCertificates()
    {
        QVERIFY(flow->showCard("anna"));
        const QImage ofAnna = photo();
        const QString surname = text("lsurnameVal");
        QVERIFY(flow->world.insertCard("Czytnik Beta", "no-certificates"));
        holdTheReadOfTheCard();

        flow->window->loadedReaders({ "Czytnik Beta" });
        flow->world.release();
        letTheWorkerFinish();

        QTRY_COMPARE(flow->page(), QString("pageNoElectricLayer"));
        QVERIFY2(!flow->widget("widgetBlurICAO")->accessibleName().contains(surname), "name");
        QVERIFY2(photo() != ofAnna, "photo");
    }

    // The list that the program has made itself is answered behind the Monitor's word that there is no card, so that
    // the reader is selected, and the word that there is one again changes nothing.
    void cardThatComesWhileItsTokensAreLookedAtIsShownInPart()
    {
        QVERIFY(flow->world.insertCard("Czytnik Alfa", "anna"));
        QVERIFY(flow->world.insertCard("Czytnik Beta", "jan"));
        flow->openWindow();
        flow->window->loadedReaders({ "Czytnik Beta", "Czytnik Alfa" });
        QVERIFY(flow->waitForCard());
        letTheWorkerFinish();
        QCOMPARE(flow->readersBox()->currentText(), QString("Czytnik Beta"));
        flow->world.removeCard("Czytnik Beta");
        flow->world.clearTrace();
        tellReaders("0:Czytnik Alfa||");
        // Not by the event loop, which would take the answer.
        constexpr std::size_t slotsOfBoth = 6;
        const QDeadlineTimer patience(10000);
        while (flow->world.trace("C_GetSlotInfo").size() < slotsOfBoth && !patience.hasExpired())
            QThread::msleep(1);
        flow->world.removeCard("Czytnik Alfa");
        tellReaders("NO_CARD");
        QVERIFY(flow->world.block("C_GetTokenInfo", {}, 3));
        QTRY_COMPARE_WITH_TIMEOUT(flow->world.waitingCalls(), 1, 10000);

        flow->world.insertCard("Czytnik Alfa", "ewa");
        tellReaders("0:Czytnik Alfa||");
        flow->world.release();
        letTheWorkerFinish();

        QCOMPARE(flow->page(), QString("pageHome"));
        QVERIFY(!flow->loaderShown());
        QCOMPARE(flow->button("bChangePinAuthenCert")->text().trimmed(), QString());
        QCOMPARE(flow->button("bChangePinAuthorCert")->text().trimmed(), QString("Zmień PIN"));
        QVERIFY(!flow->widget("authenticationCert")->isEnabled());
        QVERIFY(flow->widget("authorizationCert")->isEnabled());
        for (const QString &label : labels())
            QCOMPARE(text(label), QString());
    }
};

VELMOR_TEST(TestCardReadStale)
#include "tst_card_read_stale.moc"
