// Cards on and off at random moments, readers added and dropped, random messages, random keys and clicks, at full
// speed: the real window must show nothing of one card with another, keep nothing, and hold no more than in the
// beginning.
//
//     endurance [--cards N] [--seed N]
//
// It prints what it has done and holds; what is meant to grow is measured by taking it away, and named.
#include "endurance/growth.h"
#include "endurance/log_watch.h"
#include "endurance/monitor_inbox.h"
#include "endurance/numbered_cards.h"
#include "endurance/own_resources.h"
#include "endurance/random_message.h"
#include "endurance/restless_user.h"
#include "endurance/style_sheet_cost.h"
#include "endurance/window_texts.h"

#include "app/app.h"
#include "base/ipc_msg.h"
#include "platform/os.h"
#include "simworld/reader_message.h"
#include "support/fake_programs.h"
#include "support/flow.h"
#include "support/opened_urls.h"
#include "support/popup_closer.h"
#include "support/profile_folder.h"

#include <QAbstractButton>
#include <QApplication>
#include <QElapsedTimer>
#include <QStackedWidget>
#include <QThread>

#include <algorithm>
#include <cstdio>

namespace {

constexpr int specimens = 40;
constexpr int firstCards = 100; // by then all that is made once is made

class Endurance : public Driver {
public:
    Endurance(int wanted, unsigned seed) : cards(wanted), lot(seed) { }

    int run()
    {
        prepare();
        QElapsedTimer clock;
        clock.start();
        OwnResources first;
        for (int done = 0; done < cards && failures.isEmpty(); ++done) {
            if (done == firstCards)
                first = restAndMeasure("after the first hundred");
            oneCard();
        }
        const OwnResources last = restAndMeasure("at the end");
        std::printf(
            "%d cards in %lld s, %d lists, %d messages, %d keys, %d clicks; %d looks at what can be seen, %d at all\n",
            cardCount, static_cast<long long>(clock.elapsed() / 1000), lists, messages, user->keys(), user->clicks(),
            looks, wholeLooks);
        std::printf("%d of them were read in part\n", readInPart);
        if (readInPart > 1 + cardCount / 1000)
            fail("too many cards were read in part");
        if (cardCount > firstCards) {
            for (const QString &growth : growthBeyondLimits(first, last, costOfStyleSheets(*window)))
                fail(growth);
        }
        end(first);
        for (const QString &failure : failures)
            std::printf("FAIL %s\n", qPrintable(failure));
        std::printf("failures: %d\n", failures.size());
        return !failures.isEmpty();
    }

private:
    unsigned below(unsigned bound) { return lot() % bound; }
    bool oneOf(unsigned bound) { return below(bound) == 0; }

    void fail(const QString &what)
    {
        if (LogWatch::loud())
            std::fprintf(stderr, "FAIL %s\n", qPrintable(what));
        if (failures.size() < 5)
            failures << QString("card %1: %2").arg(cardCount).arg(what);
    }

    void prepare()
    {
        world.reset();
        world.setTraceOn(false);
        for (const sim::Card &card : deck.cards()) {
            if (!world.defineCard(card))
                qFatal("%s", world.error().c_str());
        }
        if (!App::instance()->lock())
            qFatal("no lock");
        monitor = std::make_unique<MonitorInbox>();
        openWindow();
        const auto count = [this] { ++requests; };
        Window *w = window.get();
        QObject::connect(w, &Window::getReaders, w, count);
        QObject::connect(w, &Window::selectDriverReader, w, count);
        QObject::connect(w, &Window::getCertsCount, w, count);
        QObject::connect(w, &Window::getConteinersAndICAO, w, count);
        QObject::connect(w, &Window::getCerts, w, count);
        QObject::connect(w, &Window::getPhoto, w, count);
        inbox = std::make_unique<RawInbox>("velmor_manager");
        user = std::make_unique<RestlessUser>(*window, lot);
    }

    // By the button, if there is one: without a reader there is not.
    void goHome()
    {
        auto *back = find<QAbstractButton>("bWroc");
        if (!messagesWait() && (page() == "pageSettings" || page() == "pageHelp") && back->isVisible())
            back->click();
    }

    // Tells the window of the readers as they are, as the Monitor does after each change.
    void tell()
    {
        // Over the settings and the help a list is only noted, and a card that has come into the same reader by the way
        // home is not read. That is meant, so this user is at home when the readers change.
        goHome();
        ++lists;
        told = world.readers();
        // Where another card is there instead, what is still told of the one before is taken, as is meant, until the
        // other is counted. Where there is none, it is not.
        const QString box = find<QComboBox>("cbReaders")->currentText();
        const bool inUse = box.startsWith("Czytnik");
        lateAnswersCome |= inUse && std::none_of(told.begin(), told.end(), [&](const sim::Reader &reader) {
                               return !reader.card.empty() && QString::fromStdString(reader.name) == box;
                           });
        if (cardsTold().isEmpty())
            lateAnswersCome = false;
        IpcMsg message { { "readers", QByteArray::fromStdString(sim::readerMessage(told)) } };
        message.setTo("velmor_manager");
        window->recvIpcMsg(message);
        // Of a card that has come the button tells.
        goHome();
    }

    void answerAsMonitor()
    {
        if (monitor->takeQuestion())
            tell();
    }

    void sendMessage()
    {
        if (!inbox->isThere() || !inbox->isFree())
            return;
        ++messages;
        inbox->write(randomMessage(lot));
    }

    void live(int milliseconds)
    {
        QElapsedTimer clock;
        clock.start();
        // More keys than anybody presses, and what runs beside has the processor in between.
        constexpr unsigned long pause = 200; // us
        do {
            if (oneOf(2))
                user->doSomething();
            QThread::usleep(pause);
            QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            answerAsMonitor();
        } while (clock.elapsed() < milliseconds);
        look();
    }

    // While the browsers are changed, what comes from the family waits; a card that the program lists by itself is read
    // all the same.
    bool messagesWait() const
    {
        return LogWatch::listsTaken() < lists
            || (loaderShown() && find<QLabel>("loadingDesc")->text() == "Proszę czekać...");
    }

    bool settle()
    {
        if (!waitForThat([this] { return !messagesWait(); }))
            return false;
        // A read is a chain of requests, each made when the one before has been answered.
        for (int before = -1; before != requests + lists;) {
            before = requests + lists;
            const int loaded = LogWatch::sslLoaded();
            emit window->loadSsl();
            if (!waitForThat([loaded] { return LogWatch::sslLoaded() != loaded; }))
                return false;
            QCoreApplication::processEvents();
            if (before == requests + lists)
                answerAsMonitor();
        }
        lateAnswersCome = false;
        return true;
    }

    static bool waitForThat(const std::function<bool()> &condition)
    {
        QElapsedTimer clock;
        for (clock.start(); !condition() && clock.elapsed() < patience;)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
        return condition();
    }

    // Of the cards that were told, at most one is shown, and no other.
    QList<int> cardsTold() const
    {
        QList<int> numbers;
        for (const sim::Reader &reader : told) {
            if (!reader.card.empty())
                numbers << QString::fromStdString(reader.card).right(3).toInt();
        }
        return numbers;
    }

    void look()
    {
        if (messagesWait())
            return;
        ++looks;
        const QString texts = windowTexts(*window, true);
        const QList<int> shown = deck.tellsOf(texts);
        const QList<int> present = cardsTold();
        if (shown.size() > 1)
            fail("two cards are shown at once\n" + linesOf(texts, shown));
        else if (!shown.isEmpty() && !present.contains(shown[0]) && !lateAnswersCome)
            fail("a card that has gone is shown\n" + linesOf(texts, shown));
    }

    void lookAtAll()
    {
        ++wholeLooks;
        if (!settle()) {
            fail("the card worker does not come to an end");
            return;
        }
        const QString texts = windowTexts(*window, false);
        const QList<int> all = deck.tellsOf(texts);
        const QString box = find<QComboBox>("cbReaders")->currentText();
        QList<int> current;
        for (const sim::Reader &reader : told) {
            if (QString::fromStdString(reader.name) == box && !reader.card.empty())
                current << QString::fromStdString(reader.card).right(3).toInt();
        }
        for (const int number : all) {
            if (!current.contains(number))
                fail(QString("card %1 is told of, but the reader holds %2\n").arg(number).arg(current.value(0, -1))
                     + linesOf(texts, all));
        }
        if (page() != "pageHome" || current.isEmpty() || loaderShown() || all.contains(current[0]))
            return;
        // Of such a card the program finds no more until it is told of other readers.
        if (LogWatch::foundInPart())
            ++readInPart;
        else
            fail("the card is not shown\n" + texts);
    }

    QString linesOf(const QString &texts, const QList<int> &numbers) const
    {
        QString lines = "  page " + page() + ", cards " + QString::number(numbers.size()) + '\n';
        for (const QString &line : texts.split('\n')) {
            if (!deck.tellsOf(line).isEmpty())
                lines += "  " + line.left(160) + '\n';
        }
        return lines;
    }

    std::string readerName(unsigned number) const { return "Czytnik " + std::string(1, char('A' + number)) + "x"; }

    void makeRoom(const std::string &place)
    {
        for (const sim::Reader &reader : world.readers()) {
            if (reader.name != place || reader.card.empty())
                continue;
            world.removeCard(place);
            tell();
            live(int(below(12)));
        }
    }

    std::string cardOutside()
    {
        for (;;) {
            const std::string card = NumberedCards::name(int(below(specimens)));
            const std::vector<sim::Reader> readers = world.readers();
            if (std::none_of(readers.begin(), readers.end(), [&](const auto &reader) { return reader.card == card; }))
                return card;
        }
    }

    void oneCard()
    {
        ++cardCount;
        const std::string place = readerName(below(3));
        makeRoom(place);
        const std::string card = cardOutside();
        world.restoreCard(card);
        if (!world.insertCard(place, card))
            fail(QString("cannot insert: ") + world.error().c_str());
        tell();
        live(int(below(90)));
        if (oneOf(4))
            sendMessage();
        if (oneOf(5))
            lookAtAll();
        if (oneOf(12)) {
            // Dropped with its card, or without one.
            world.removeReader(readerName(below(3)));
            tell();
            live(int(below(10)));
        }
        for (const sim::Reader &reader : world.readers()) {
            // Now and then one stays, and is another reader's beside the next.
            if (reader.card.empty() || oneOf(reader.name == place ? 6 : 2))
                continue;
            world.removeCard(reader.name);
            tell();
            live(int(below(12)));
        }
        if (oneOf(9))
            lookAtAll();
    }

    // No reader, the page that says so, and nothing under way.
    OwnResources restAndMeasure(const char *when)
    {
        for (const sim::Reader &reader : world.readers())
            world.removeReader(reader.name);
        settle();
        find<QStackedWidget>("pager")->setCurrentWidget(find("pageHome"));
        tell();
        // The browsers are changed, and a certificate is looked for, by timers.
        QTest::qWait(700);
        settle();
        find<QStackedWidget>("pager")->setCurrentWidget(find("pageHome"));
        tell();
        QTest::qWait(1100);
        const QString left = linesOf(windowTexts(*window, false), {});
        if (!deck.tellsOf(left).isEmpty())
            fail("without a card there is something of one\n" + left);
        const OwnResources own = OwnResources::now();
        std::printf("%s: %s\n", when, qPrintable(own.text()));
        std::fflush(stdout);
        return own;
    }

    void end(const OwnResources &first)
    {
        user.reset();
        inbox.reset();
        closeWindow();
        App::instance()->unlock();
        monitor.reset();
        const OwnResources left = OwnResources::now();
        std::printf("after the window: %s\n", qPrintable(left.text()));
        if (left.segments > 0)
            fail("a segment is left");
        if (left.children > 0)
            fail("a child is left");
        if (cardCount > firstCards && left.threads >= first.threads)
            fail("the worker's thread is left");
    }

    const int cards;
    std::mt19937 lot;
    const NumberedCards deck { specimens };
    std::unique_ptr<MonitorInbox> monitor;
    std::unique_ptr<RawInbox> inbox;
    std::unique_ptr<RestlessUser> user;
    std::vector<sim::Reader> told;
    QStringList failures;
    int cardCount = 0;
    int lists = 0;
    int requests = 0; // of a read
    bool lateAnswersCome = false;
    int messages = 0;
    int looks = 0;
    int wholeLooks = 0;
    int readInPart = 0;
};

int option(const QStringList &arguments, const char *name, int otherwise)
{
    const int at = arguments.indexOf(name);
    return at < 0 ? otherwise : arguments.value(at + 1).toInt();
}

} // namespace

int main(int argc, char *argv[])
{
    TestHome home;
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    Flow::setUpApplication();
    FakePrograms programs;
    programs.installFirefox();
    const ProfileFolder profile(Os().profilesRoot("Firefox") + "a.default", "128.0");
    OpenedUrls pages("https");
    OpenedUrls files("file");
    PopupCloser popups;
    // What tests keep for later would grow with each card.
    popups.meanwhile = [&popups] { popups.forget(); };
    for (OpenedUrls *opened : { &pages, &files })
        QObject::connect(opened, &OpenedUrls::taken, [opened] { opened->urls.clear(); });
    LogWatch::begin();
    const QStringList arguments = QCoreApplication::arguments();
    return Endurance(option(arguments, "--cards", 10000), unsigned(option(arguments, "--seed", 1))).run();
}
