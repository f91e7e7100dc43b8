#include "support/flow.h"

#include "cert_widget.h"

#include <QTableWidget>

// The table of certificate cards, as one list of certificates takes the place of another.
class TestWindowCertificates : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<Flow> flow;
    QByteArrayList four;

    QTableWidget *table() const { return flow->find<QTableWidget>("tableCert"); }
    void showQualified(const QByteArrayList &certificates)
    {
        flow->window->loadedCerts({}, {}, {}, certificates);
        flow->window->chooseQualifiedCertInfo();
    }
    void collect(const char *name)
    {
        const std::optional<sim::Card> card = flow->world.card(name);
        for (const sim::Object &object : card->objects.at(sim::Qualified)) {
            if (object.objectClass == 1)
                four << QByteArray::fromStdString(object.value);
        }
    }

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init()
    {
        flow = std::make_unique<Flow>();
        four.clear();
        collect("three-qualified");
        collect("anna");
        QCOMPARE(four.size(), 4);
        QVERIFY(flow->showCard("anna"));
    }
    void cleanup() { flow.reset(); }

    void fewerCertificatesLeaveNoCardOfTheFormer_data()
    {
        QTest::addColumn<int>("certificates");
        for (int i = 0; i < 4; ++i)
            QTest::addRow("%d", i) << i;
    }
    void fewerCertificatesLeaveNoCardOfTheFormer()
    {
        QFETCH(int, certificates);
        showQualified(four);
        QCOMPARE(table()->findChildren<CertWidget *>().size(), 4);

        showQualified(four.mid(0, certificates));

        // The toolkit deletes them later.
        QTRY_COMPARE(table()->findChildren<CertWidget *>().size(), certificates);
    }

    void withoutCertificatesThereIsNoPlaceForOne()
    {
        showQualified({});

        QCOMPARE(table()->rowCount(), 0);
        QCOMPARE(table()->columnCount(), 0);
    }
};

VELMOR_TEST(TestWindowCertificates)
#include "tst_window_certificates.moc"
