#include "faults/rig.h"

#include "app/app.h"
#include "base/ipc_msg.h"
#include "simworld/reader_message.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QDeadlineTimer>
#include <QLabel>
#include <QStackedWidget>
#include <QTableWidget>

#include <algorithm>
#include <atomic>

namespace {

constexpr int segmentSize = 500;
// So often the Monitor answers one who asks again and again.
constexpr int mostAnswers = 4;

std::atomic<int> sslLoaded { 0 };

void count(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (message == "SSL loaded")
        ++sslLoaded;
    static const bool loud = qEnvironmentVariableIsSet("VELMOR_FAULTS_LOG");
    if (loud || type == QtFatalMsg)
        std::fprintf(stderr, "%s\n", qPrintable(message));
}

} // namespace

Rig::Rig() : monitor("velmor_monitor", segmentSize)
{
    world.reset();
    qInstallMessageHandler(count);
}

Rig::~Rig()
{
    world.clearFaults();
    world.release();
    if (window)
        closeWindow();
    qInstallMessageHandler(nullptr);
}

void Rig::listen()
{
    Window *w = window.get();
    QObject::connect(w, &Window::getReaders, [this](int required, int refused) {
        Request request { Request::Readers, {} };
        request.flags[0] = required;
        request.flags[1] = refused;
        record(request);
    });
    QObject::connect(w, &Window::selectDriverReader, [this](const QString &r) { record({ Request::Select, r }); });
    QObject::connect(w, &Window::getCertsCount, [this](const QString &r) { record({ Request::Counts, r }); });
    QObject::connect(w, &Window::getConteinersAndICAO, [this](const QString &r) { record({ Request::Data, r }); });
    QObject::connect(w, &Window::getPhoto, [this](const QString &r) { record({ Request::Photo, r }); });
    QObject::connect(w, &Window::getCerts, [this](const QString &r, bool a, bool p, bool s, bool q) {
        Request request { Request::Certs, r };
        request.wanted[0] = a;
        request.wanted[1] = p;
        request.wanted[2] = s;
        request.wanted[3] = q;
        record(request);
    });
    const auto pin = [this](Request::Kind kind) {
        return [this, kind](const QString &r, const QString &container, const QString &one, const QString &two) {
            const bool typed = !one.isEmpty() && !two.isEmpty();
            // By the delay alone, which a user only waits for.
            if (kind == Request::Unblock && !typed)
                steps.push_back({ [](WindowRules &rule) { rule.padDelayOver(); }, true, {} });
            record({ kind, r, container, typed });
        };
    };
    QObject::connect(w, &Window::changePinSig, pin(Request::Change));
    QObject::connect(w, &Window::unblockPinSig, pin(Request::Unblock));
}

void Rig::openWindow()
{
    steps.clear();
    world.clearTrace();
    rules.open();
    window = std::make_unique<Window>();
    window->show();
    listen();
    underWay = true;
}

QStringList Rig::closeWindow()
{
    world.clearTrace();
    Driver::closeWindow();
    QStringList wrong;
    worker.feed(world.trace());
    worker.end();
    worker.expectNoMoreCalls();
    wrong << worker.violations();
    forgetWindow();
    return wrong;
}

void Rig::forgetWindow()
{
    worker.startAnew();
    rules.open();
    rules.expected.clear();
    steps.clear();
}

QStringList Rig::quit()
{
    // Three times it asks the worker, each half a second after the other, then it makes it end.
    constexpr int patienceOfTheWindow = 4000;
    QStringList wrong;
    find<QAbstractButton>("bClose")->click();
    if (!runUntil([this] { return !window->isVisible(); }, patienceOfTheWindow))
        wrong << "the window does not go";
    window.reset();
    forgetWindow();
    return wrong;
}

void Rig::putCard(const std::string &card, bool pinpad, const std::string &where)
{
    const std::vector<sim::Reader> readers = world.readers();
    const auto row =
        std::find_if(readers.begin(), readers.end(), [&](const sim::Reader &r) { return r.name == where; });
    const bool there = row != readers.end();
    const bool good = (there || world.addReader(where, pinpad)) && world.setPinpad(where, pinpad)
        && ((there && row->card == card) || world.insertCard(where, card));
    if (!good)
        qFatal("%s", world.error().c_str());
    worker.putCard(where, *world.card(card));
}

void Rig::takeCard()
{
    for (const sim::Reader &row : world.readers()) {
        if (!row.card.empty())
            world.removeCard(row.name);
    }
}

void Rig::tellReaders()
{
    const QString list = QString::fromStdString(sim::readerMessage(world.readers()));
    happen([list](WindowRules &r) { r.listFromMonitor(list); },
           [this, list] {
               IpcMsg message { { "readers", list.toUtf8() } };
               message.setTo("velmor_manager");
               window->recvIpcMsg(message);
           });
}

void Rig::happen(const std::function<void(WindowRules &)> &rule, const std::function<void()> &deed)
{
    steps.push_back({ rule, !underWay, {} });
    underWay = true;
    deed();
}

void Rig::happenByClick(const std::function<void(WindowRules &)> &rule, const char *button)
{
    auto *widget = find<QAbstractButton>(button);
    if (!widget->isVisible() || !widget->isEnabled()) {
        refusals << QString("%1 cannot be pressed").arg(button);
        return;
    }
    happen(rule, [widget] { widget->click(); });
}

QStringList Rig::takeRefusals()
{
    QStringList taken;
    taken.swap(refusals);
    return taken;
}

bool Rig::runUntil(const std::function<bool()> &condition, int milliseconds)
{
    const QDeadlineTimer deadline(milliseconds);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        // The watch wakes the loop in any case.
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    return true;
}

bool Rig::workerIsDone()
{
    const int before = sslLoaded;
    emit window->loadSsl();
    if (!runUntil([before] { return sslLoaded != before; }))
        return false;
    QCoreApplication::processEvents();
    return true;
}

// True if there was something to answer.
bool Rig::answerAsMonitor()
{
    if (monitor.isFree())
        return false;
    const QByteArray text = monitor.text();
    monitor.clear();
    if (!text.contains("getReadersWithPace"))
        return false;
    endless = ++answered > mostAnswers;
    if (endless)
        return false;
    tellReaders();
    return true;
}

bool Rig::settle()
{
    answered = 0;
    endless = false;
    for (std::size_t before = steps.size() + 1; before != steps.size();) {
        before = steps.size();
        if (!workerIsDone())
            return false;
        // What a question follows from has been answered by then.
        if (steps.size() == before) {
            underWay = false;
            answerAsMonitor();
        }
    }
    return true;
}

bool Rig::waitForBlock()
{
    answered = 0;
    endless = false;
    for (std::size_t before = steps.size() + 1; before != steps.size();) {
        before = steps.size();
        const int loadedBefore = sslLoaded;
        emit window->loadSsl();
        // Not asked twice: the call that was seen may be one that was just let go.
        bool waits = false;
        const auto waitsOrIsDone = [&] {
            waits = world.waitingCalls() > 0;
            return waits || sslLoaded != loadedBefore;
        };
        if (!runUntil(waitsOrIsDone))
            return false;
        if (waits)
            return true;
        QCoreApplication::processEvents();
        if (steps.size() == before) {
            underWay = false;
            answerAsMonitor();
        }
    }
    return false;
}

bool Rig::waitForRequest()
{
    const std::size_t before = steps.size();
    return runUntil([&] { return steps.size() > before; });
}

QStringList Rig::judge()
{
    QStringList wrong;
    calls = world.trace();
    world.clearTrace();
    worker.feed(calls);
    replay(wrong);
    worker.expectNoMoreCalls();
    wrong = worker.violations() + wrong;
    if (wrong.isEmpty())
        compare(wrong);
    steps.clear();
    return wrong;
}

// The worker answers one request after the other. An answer is known to have come before a step that happened when
// nothing was under way, and before a request that nothing else can have led to.
void Rig::replay(QStringList &wrong)
{
    QQueue<Request> asked;
    const auto answerOne = [&] { rules.answer(asked.dequeue()); };
    for (const Step &step : steps) {
        if (step.rule) {
            while (step.afterAll && !asked.isEmpty())
                answerOne();
            step.rule(rules);
            continue;
        }
        while (rules.expected.isEmpty() && !asked.isEmpty())
            answerOne();
        if (rules.expected.isEmpty()) {
            wrong << "a request that nothing leads to: " + step.request.text();
            return;
        }
        const Request expected = rules.expected.dequeue();
        if (!(expected == step.request)) {
            wrong << QString("the window asked '%1' instead of '%2'").arg(step.request.text(), expected.text());
            return;
        }
        asked.enqueue(step.request);
    }
    while (!asked.isEmpty())
        answerOne();
    if (!rules.expected.isEmpty())
        wrong << "the window did not ask: " + rules.expected.head().text();
}

Shown Rig::seen() const
{
    const auto text = [this](const char *label) { return find<QLabel>(label)->text(); };
    Shown now;
    now.page = page();
    now.title = text("lMainTitle");
    now.subtitle = text("lSubTitle");
    now.loader = loaderShown() ? text("loadingDesc") : QString();
    now.box = find<QComboBox>("cbReaders")->currentText();
    now.number = text("lNumIdVal");
    now.expiry = text("lExpDateVal");
    now.names = text("lCommonNameVal");
    now.surname = text("lsurnameVal");
    for (const char *button : { "bChangePinAuthenCert", "bChangePinAuthorCert", "bChangePinQualifiedCert" })
        now.words << find<QAbstractButton>(button)->text().trimmed();
    now.arrow = photoArrived();
    now.result = text("lPinChanged");
    now.disconnected = text("lDisconnect");
    now.certificates = 0;
    auto *table = find<QTableWidget>("tableCert");
    for (int i = 0; i < table->rowCount() * table->columnCount(); ++i)
        now.certificates += table->cellWidget(i / table->columnCount(), i % table->columnCount()) != nullptr;
    return now;
}

void Rig::compare(QStringList &wrong) const
{
    const Shown now = seen();
    const Shown &should = rules.shown;
    const auto differ = [&wrong](const char *what, const QString &is, const QString &ought) {
        // A name that is too long is cut, and ends in three dots.
        const bool cut = is.endsWith("...") && ought.startsWith(is.left(is.size() - 3));
        if (is != ought && !cut)
            wrong << QString("%1 is '%2', not '%3'").arg(what, is, ought);
    };
    differ("the page", now.page, should.page);
    differ("the loader", now.loader, should.loader);
    differ("the reader", now.box, should.box);
    if (!should.title.isEmpty()) {
        differ("the title", now.title, should.title);
        differ("the subtitle", now.subtitle, should.subtitle);
    }
    differ("the number", now.number, should.number);
    differ("the date of expiry", now.expiry, should.expiry);
    differ("the names", now.names, should.names);
    differ("the surname", now.surname, should.surname);
    if (!should.words.isEmpty())
        differ("the PIN buttons", now.words.join('|'), should.words.join('|'));
    const bool home = should.page == "pageHome" && should.loader.isEmpty();
    if (home && now.arrow != should.arrow)
        wrong << "the photo has, or has not, arrived";
    if (should.page == "pageCorrectChange")
        differ("the result", now.result, should.result);
    if (should.page == "pageDisconected")
        differ("the page without a card", now.disconnected, should.disconnected);
    if (should.page == "pageCertInfo" && now.certificates != should.certificates)
        wrong << QString("%1 certificates, not %2").arg(now.certificates).arg(should.certificates);
}
