#include "base/common.h"

#include "support/flow.h"
#include "thproxy.h"

#include <QRegularExpression>

// The table of a card's life in docs/architecture.md, held against the program.
class TestCardLife : public QObject {
    Q_OBJECT

private:
    struct Step {
        QString request;
        QString slot;
        QString answer;
        QString taker;
    };

    static QList<Step> told()
    {
        static const QRegularExpression row("^\\| `(\\w+)` \\| `(\\w+)` \\| `(\\w+)` \\| `(\\w+)` \\|",
                                            QRegularExpression::MultilineOption);
        QList<Step> steps;
        auto rows = row.globalMatch(readFileText(VELMOR_TEST_SOURCE_DIR "/docs/architecture.md"));
        while (rows.hasNext()) {
            const auto match = rows.next();
            steps << Step { match.captured(1), match.captured(2), match.captured(3), match.captured(4) };
        }
        return steps;
    }

    static bool has(const QMetaObject &type, QMetaMethod::MethodType kind, const QString &name)
    {
        for (int i = 0; i < type.methodCount(); ++i) {
            if (type.method(i).methodType() == kind && type.method(i).name() == name.toLatin1())
                return true;
        }
        return false;
    }

private slots:
    void initTestCase() { Flow::setUpApplication(); }

    void everyNameOfTheTableIsThere()
    {
        QCOMPARE(told().size(), 6);
        for (const Step &step : told()) {
            QVERIFY2(has(Window::staticMetaObject, QMetaMethod::Signal, step.request), qPrintable(step.request));
            QVERIFY2(has(ThProxy::staticMetaObject, QMetaMethod::Slot, step.slot), qPrintable(step.slot));
            QVERIFY2(has(ThProxy::staticMetaObject, QMetaMethod::Signal, step.answer), qPrintable(step.answer));
            QVERIFY2(has(Window::staticMetaObject, QMetaMethod::Slot, step.taker), qPrintable(step.taker));
        }
    }

    void cardIsAskedInThatOrder()
    {
        Flow flow;
        QVERIFY(flow.showCard("anna"));
        QStringList asked;
        const auto note = [&asked](const char *name) { return [&asked, name] { asked << name; }; };
        const Window *window = flow.window.get();
        connect(window, &Window::getReaders, this, note("getReaders"));
        connect(window, &Window::selectDriverReader, this, note("selectDriverReader"));
        connect(window, &Window::getCertsCount, this, note("getCertsCount"));
        connect(window, &Window::getConteinersAndICAO, this, note("getConteinersAndICAO"));
        connect(window, &Window::getCerts, this, note("getCerts"));
        connect(window, &Window::getPhoto, this, note("getPhoto"));

        flow.window->loadAll();
        QVERIFY(flow.waitForCard());

        QStringList expected;
        for (const Step &step : told())
            expected << step.request;
        QCOMPARE(asked, expected);
    }
};

VELMOR_TEST(TestCardLife)
#include "tst_card_life.moc"
