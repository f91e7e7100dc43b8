#include "support/pin_flow.h"
#include "support/widget_text.h"

#include <QRegularExpression>

// After the card has gone, or one of another holder has come, nothing in the window tells of it: not on hidden pages
// either, and not to a screen reader.
class TestCardTraces : public QObject {
    Q_OBJECT

private:
    // Widget and place to text, of every widget with a name, hidden ones too.
    using Texts = QMap<QString, QString>;

    static Texts texts(const Flow &flow)
    {
        Texts result;
        for (const QWidget *widget : flow.window->findChildren<QWidget *>()) {
            const QString name = widget->objectName();
            if (name.isEmpty() || name.startsWith("qt_"))
                continue;
            result.insert(name + " text", textIn(widget));
            result.insert(name + " tip", widget->toolTip());
            result.insert(name + " name", widget->accessibleName());
            result.insert(name + " description", widget->accessibleDescription());
            result.insert(name + " status", widget->statusTip() + widget->whatsThis());
        }
        return result;
    }

    // What says something else than before, but for the page that is shown and for the words of a PIN, which tell what
    // can be done with it and nothing of the holder.
    static QStringList differences(const Texts &before, const Texts &after)
    {
        static const QRegularExpression others(
            "^(lDisconnect|lPukBlocked_3|lMainTitle|loadingDesc|lReaderDesc|bChangePin\\w+Cert|"
            "lTryNumDescPUK|lTryNumDescPUKpinpad) ");
        QStringList result;
        for (auto row = after.cbegin(); row != after.cend(); ++row) {
            if (before.value(row.key()) != row.value() && !others.match(row.key()).hasMatch())
                result << row.key() + ": " + before.value(row.key()) + " > " + row.value();
        }
        return result;
    }

    // Home page, all data, and each page of certificates.
    static void lookAtEverything(Flow &flow)
    {
        flow.window->moveToAllDataPage();
        for (auto open : { &Window::chooseAuthenticationCertInfo, &Window::chooseAuthorizationCertInfo,
                           &Window::choosePresenceCertInfo, &Window::chooseQualifiedCertInfo }) {
            (flow.window.get()->*open)();
            flow.window->moveToHomePage();
        }
    }

private slots:
    void initTestCase() { Flow::setUpApplication(); }

    void nothingTellsOfACardThatHasGone_data()
    {
        QTest::addColumn<QString>("card");
        Flow flow;
        for (const sim::Card &card : flow.world.cards()) {
            if (card.supported)
                QTest::newRow(card.name.c_str()) << QString::fromStdString(card.name);
        }
    }
    void nothingTellsOfACardThatHasGone()
    {
        QFETCH(QString, card);
        Flow flow;
        flow.openWindow();
        flow.window->loadedReaders({}, "NO_CARD");
        const Texts before = texts(flow);

        QVERIFY(flow.showCard(card.toStdString()));
        if (flow.page() == "pageHome") {
            QVERIFY(!differences(before, texts(flow)).isEmpty());
            lookAtEverything(flow);
        }
        flow.window->loadedReaders({}, "NO_CARD");
        // The cards of the certificates go by the event loop.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

        const QStringList left = differences(before, texts(flow));
        QVERIFY2(left.isEmpty(), qPrintable(left.join('\n')));
    }
};

VELMOR_TEST(TestCardTraces)
#include "tst_card_traces.moc"
