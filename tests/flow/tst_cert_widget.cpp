#include "support/armed_timers.h"
#include "support/flow.h"

#include "cert_widget.h"

#include <QFocusEvent>
#include <QSignalSpy>
#include <QSslCertificate>

// One card of the certificate page by itself: what it does with the focus and with clicks.
class TestCertWidget : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<Flow> flow;
    QSslCertificate certificate;

    std::unique_ptr<CertWidget> card(bool focusFirst = false) const
    {
        return std::make_unique<CertWidget>(flow->window.get(), certificate, nullptr, focusFirst);
    }

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init()
    {
        flow = std::make_unique<Flow>();
        flow->openWindow();
        const std::optional<sim::Card> anna = flow->world.card("anna");
        certificate =
            QSslCertificate(QByteArray::fromStdString(anna->objects.at(sim::Authentication).front().value), QSsl::Der);
        QVERIFY(!certificate.isNull());
    }
    void cleanup() { flow.reset(); }

    void onlyTheFirstCardWaitsForTheFocus()
    {
        std::unique_ptr<CertWidget> first, second;
        QCOMPARE(waitsArmedBy([&] { first = card(true); }), QList<int> { 100 });
        QCOMPARE(waitsArmedBy([&] { second = card(false); }), QList<int>());
    }

    void focusThatComesByTheKeyboardIsToldOfEveryPart_data()
    {
        QTest::addColumn<QByteArray>("part");
        QTest::addColumn<int>("type");
        QTest::addColumn<int>("reason");
        QTest::addColumn<int>("told");
        for (const char *part : { "lOrganizationName", "ValidFromFrame", "ValidToFrame", "bDetailsCert" }) {
            const auto row = [part](const char *name, QEvent::Type type, Qt::FocusReason reason, int told) {
                QTest::addRow("%s, %s", part, name) << QByteArray(part) << int(type) << int(reason) << told;
            };
            row("by Tab", QEvent::FocusIn, Qt::TabFocusReason, 1);
            row("back by Tab", QEvent::FocusIn, Qt::BacktabFocusReason, 1);
            row("by the program", QEvent::FocusIn, Qt::OtherFocusReason, 1);
            row("by the mouse", QEvent::FocusIn, Qt::MouseFocusReason, 0);
            row("left by Tab", QEvent::FocusOut, Qt::TabFocusReason, 0);
        }
    }
    void focusThatComesByTheKeyboardIsToldOfEveryPart()
    {
        QFETCH(QByteArray, part);
        QFETCH(int, type);
        QFETCH(int, reason);
        const std::unique_ptr<CertWidget> shown = card();
        auto *widget = shown->findChild<QWidget *>(part);
        QSignalSpy reached(shown.get(), &CertWidget::reached);

        QFocusEvent event { QEvent::Type(type), Qt::FocusReason(reason) };
        QCoreApplication::sendEvent(widget, &event);

        QTEST(int(reached.size()), "told");
        // The part has it as well.
        QVERIFY(!shown->eventFilter(widget, &event));
    }

    void clickWithinTheTimeOfADoubleClickOpensNoOther()
    {
        CertWidget empty(flow->window.get(), QSslCertificate(), nullptr, false);
        const int interval = QApplication::doubleClickInterval();
        constexpr int longerThanTheTest = 600000;
        QApplication::setDoubleClickInterval(longerThanTheTest);
        const LogCatcher log;

        // Without a certificate no window comes, and the log tells of it all the same.
        for (int i = 0; i < 3; ++i)
            QMetaObject::invokeMethod(&empty, "openCertDetails");

        QApplication::setDoubleClickInterval(interval);
        QCOMPARE(log.count("open cert win"), 1);
    }
};

VELMOR_TEST(TestCertWidget)
#include "tst_cert_widget.moc"
