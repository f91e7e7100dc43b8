#include "siblings/can_window.h"
#include "siblings/monitor.h"
#include "siblings/sibling.h"

#include "app/app.h"

#include "support/raw_inbox.h"
#include "support/testmain.h"

#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>

// The stand-ins' own behaviour: what the Monitor says of its readers, and the window that asks for a CAN.
class TestSiblings : public QObject {
    Q_OBJECT

private:
    sim::SimWorld world;
    std::unique_ptr<CanWindow> window;

    static sim::Reader reader(const char *name, const char *card = "")
    {
        sim::Reader made;
        made.name = name;
        made.card = card;
        return made;
    }

    void typeCan(const char *can)
    {
        QTest::keyClicks(window->findChild<QLineEdit *>("lineCan"), can);
        QTest::keyClick(window.get(), Qt::Key_Return);
    }

private slots:
    void initTestCase() { Sibling::setUp("CAN", "Can"); }

    void init()
    {
        QVERIFY2(world.reset(), world.error().c_str());
        QVERIFY(world.insertCard("Antena Gamma", "anna"));
        QVERIFY(world.setWaitCan("Antena Gamma", true));
        QVERIFY(App::instance()->lock());
    }
    void cleanup()
    {
        window.reset();
        App::instance()->unlock();
    }

    void listIsCutAfterAnEntryThatFits()
    {
        QCOMPARE(readersThatFit("NO_CARD"), QByteArray("NO_CARD"));
        QByteArray list;
        for (int i = 0; i < 8; ++i)
            list += QByteArray::number(i) + ':' + QByteArray(59, 'x') + "||";
        const QByteArray cut = readersThatFit(list);
        QCOMPARE(cut, list.left(6 * 63));
        QVERIFY(cut.size() <= 400);
    }

    void diagnosisNamesEachReaderAndFitsIntoAMessage()
    {
        sim::Reader waiting = reader("Antena Gamma", "anna");
        waiting.waitCan = true;
        sim::Reader foreign = reader("Czytnik Beta", "foreign");
        foreign.supported = false;
        sim::Reader pad = reader("Klawiatura", "jan");
        pad.pinpad = true;
        QCOMPARE(diagnosis({ reader("Pusty"), waiting, foreign, pad }),
                 QByteArray("Diagnostyka czytników (symulacja)\nLiczba czytników: 4\n- Pusty: brak karty\n"
                            "- Antena Gamma: karta czeka na CAN\n- Czytnik Beta: karta nieobsługiwana\n"
                            "- Klawiatura: karta gotowa, klawiatura\n"));
        for (int length = 10; length < 60; ++length) {
            const QByteArray name(length, 'x');
            const QByteArray many = diagnosis(std::vector<sim::Reader>(20, reader(name.constData())));
            QVERIFY2(many.size() < 400, many.constData());
            QVERIFY(many.endsWith("...\n"));
        }
    }

    void rightCanOpensTheCardAndTheWindowGoes()
    {
        window = std::make_unique<CanWindow>(*App::instance());
        window->show();
        typeCan("123456");
        QVERIFY(!world.readers().front().waitCan);
        QTRY_VERIFY(!window->isVisible());
    }

    void wrongCanIsSaidSoUntilManagerClosesThePopUp()
    {
        window = std::make_unique<CanWindow>(*App::instance());
        window->show();
        typeCan("654321");
        auto *popup = window->findChild<QMessageBox *>();
        QVERIFY(popup->isVisible());
        QVERIFY(world.readers().front().waitCan);
        QCOMPARE(window->findChild<QLineEdit *>("lineCan")->text(), QString());

        Ipc manager;
        manager.setName("velmor_manager");
        QVERIFY(manager.send(IpcMsg { { "to", "velmor_can" }, { "closePopup", "1" }, { "windowFocus", 1 } }));

        QTRY_VERIFY(!popup->isVisible());
        QVERIFY(window->isVisible());
    }

    void monitorIsToldOfTheWindowAndOfItsEnd()
    {
        RawInbox monitor("velmor_monitor", 500);
        window = std::make_unique<CanWindow>(*App::instance());
        window->show();
        QCOMPARE(IpcMsg(monitor.text()).param("canAppStatus"), QByteArray("canOpened"));
        monitor.clear();

        window->reject();

        QCOMPARE(IpcMsg(monitor.text()).param("canAppStatus"), QByteArray("canClosed"));
        QVERIFY(!window->isVisible());
    }

    void windowGoesWithTheCard()
    {
        window = std::make_unique<CanWindow>(*App::instance());
        window->show();
        QVERIFY(world.removeCard("Antena Gamma"));
        QTRY_VERIFY(!window->isVisible());
    }

    void noCanIsLogged()
    {
        LogCatcher log;
        window = std::make_unique<CanWindow>(*App::instance());
        window->show();
        typeCan("274951");
        typeCan("123456");
        QVERIFY2(!log.has("274951") && !log.has("123456"), qPrintable(log.text()));
    }
};

VELMOR_TEST(TestSiblings)
#include "tst_siblings.moc"
