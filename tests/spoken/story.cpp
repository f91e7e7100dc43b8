#include "spoken/story.h"

#include "spoken/comparison.h"
#include "spoken/shown.h"
#include "spoken/told.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTimer>

namespace {

constexpr int mostStops = 60;

// What a window manager does: a window that comes up gets the keys, and the one below when it goes.
class Keys : public QObject {
public:
    Keys() { qApp->installEventFilter(this); }

    bool eventFilter(QObject *object, QEvent *event) override
    {
        auto *widget = object->isWidgetType() ? static_cast<QWidget *>(object) : nullptr;
        const bool changes = event->type() == QEvent::Show || event->type() == QEvent::Hide;
        if (!widget || !changes || !widget->isWindow() || widget->windowType() == Qt::Popup)
            return false;
        QTimer::singleShot(0, this, [] {
            QWidget *top = QApplication::activeModalWidget();
            for (QWidget *window : QApplication::topLevelWidgets()) {
                if (!top && window->isVisible() && window->windowType() == Qt::Window)
                    top = window;
            }
            if (top)
                top->activateWindow();
        });
        return false;
    }
};

QString keyWord(const QString &key)
{
    static const QMap<QString, QString> words {
        { "Return", "Enter" },       { "space", "Spacja" },        { "Escape", "Esc" }, { "Down", "strzałka w dół" },
        { "Up", "strzałka w górę" }, { "shift+Tab", "Shift+Tab" }, { "Home", "Home" },  { "End", "End" },
    };
    return words.value(key, key);
}

} // namespace

// Each answer of the card's worker changes what is shown, and what it takes away may just have been asked for.
class StoryTeller::AnswerWatch : public QObject {
public:
    explicit AnswerWatch(StoryTeller &teller) : story(teller) { }

    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::MetaCall)
            story.snapshot();
        return false;
    }

private:
    StoryTeller &story;
};

StoryTeller::StoryTeller() : answers(std::make_unique<AnswerWatch>(*this))
{
    static Keys keys;
    // Whatever the focus comes to is said at a moment at which this is shown.
    QObject::connect(qApp, &QApplication::focusChanged, &keys, [this] { snapshot(); });
}

StoryTeller::~StoryTeller() = default;

QWidget *StoryTeller::shownWindow() const
{
    QWidget *dialog = QApplication::activeModalWidget();
    return dialog ? dialog : driver.window.get();
}

void StoryTeller::snapshot()
{
    const QWidget *window = driver.window ? shownWindow() : nullptr;
    const QStringList texts = window ? shownTexts(window) : QStringList();
    for (QStringList *list : { &seen, &seenSinceBell }) {
        *list << texts;
        list->removeDuplicates();
    }
}

void StoryTeller::fault(const QString &text)
{
    wrong << text;
    lines << "    !!! " + text;
}

void StoryTeller::note(const Heard &heard)
{
    if (heard.kind == "gone")
        return;
    // What has lost its name says nothing of it.
    if (heard.kind == "change" && heard.words().isEmpty())
        return;
    heardHere << heard.words();
    ++utterances;
    if (heard.kind == "edit")
        return;
    if (heard.kind == "caret") {
        if (!heard.text.trimmed().isEmpty() && heard.role != "password text")
            lines << "    " + heard.text.simplified();
        return;
    }
    if (heard.kind == "change" && heard.name == last.name && heard.description == last.description
        && heard.states == last.states)
        return;
    lines << "    " + spokenLine(heard);
    if (heard.kind == "focus") {
        if (heard.name.trimmed().isEmpty())
            fault("a stop without a name: " + heard.role + ' ' + heard.path);
        if (spokenRole(heard.role).isEmpty())
            fault("a stop without a role: " + heard.name + " (" + heard.role + ")");
        // While a card is read the program goes on by itself, and two sentences of one label are heard as the later.
        if (last.kind == "focus" && last.path == heard.path && last.name == heard.name
            && last.description == heard.description && last.text == heard.text && !loaderSeen)
            fault("a stop twice: " + heard.name);
        stops << heard.words().join(' ');
    }
    last = heard;
}

void StoryTeller::listen()
{
    snapshot();
    const QVector<Heard> all = ear.hear([this] {
        seenSinceBell.clear();
        snapshot();
    });
    snapshot();
    loaderSeen = loaderSeen || seen.contains("Trwa odczyt danych ICAO") || seen.contains("Trwa odczyt danych z karty");
    QStringList said;
    for (const Heard &heard : all) {
        note(heard);
        if (heard.kind != "edit" && heard.kind != "gone")
            said << heard.words();
    }
    for (const QString &strange : Comparison::notShown(said, seen, onlySpoken(), &used))
        fault("heard and not shown: " + strange);
    seen = seenSinceBell;
}

void StoryTeller::press(const QString &key)
{
    loaderSeen = false;
    stops.clear();
    if (!ear.press(key))
        fault("the key does not arrive: " + key);
    listen();
}

void StoryTeller::tabTo(const QString &name)
{
    for (int i = 0; i < mostStops; ++i) {
        const int before = utterances;
        press("Tab");
        if (utterances > before && last.name.simplified().startsWith(name))
            return;
    }
    fault("no Tab leads to " + name);
}

void StoryTeller::waitFor(const QString &text)
{
    const bool said = Driver::waitFor([&] {
        listen();
        return last.words().join(' ').contains(text);
    });
    if (!said)
        fault("never said: " + text);
}

void StoryTeller::waitForFirst(const QString &text)
{
    waitFor(text);
    if (!stops.isEmpty() && !stops.first().contains(text))
        fault("heard before " + text + ": " + stops.first());
}

// Once round, from where the focus is.
void StoryTeller::readAll()
{
    QStringList paths;
    for (int i = 0; i < mostStops; ++i) {
        const int before = utterances;
        press("Tab");
        if (utterances == before)
            fault("a stop that says nothing, behind " + last.name);
        // A text with links has a stop for each of them.
        if (paths.contains(last.path) && paths.last() != last.path)
            break;
        paths << last.path;
    }
    compareWithShown();
}

void StoryTeller::compareWithShown()
{
    QStringList wanted;
    for (const QString &text : textsToHear(shownWindow()))
        wanted << toldInsteadOf(text);
    for (const QString &text : Comparison::unheard(wanted, heardHere))
        fault("shown and not heard: " + text.simplified());
}

void StoryTeller::step(const QString &words, const Happenings &happenings)
{
    const QString rest = words.mid(1);
    if (words == "read") {
        lines << "  Tab, raz dookoła:";
        readAll();
        heardHere.clear();
        return;
    }
    switch (words[0].toLatin1()) {
    case '>':
        lines << "  Tab, aż do „" + rest + "”:";
        tabTo(rest);
        break;
    case '#':
        lines << QString("  cyfry (%1):").arg(rest.size());
        for (const QChar digit : rest)
            press(digit);
        break;
    case '?':
        waitFor(rest);
        break;
    case '&':
        waitForFirst(rest);
        break;
    case '=':
        if (!driver.waitForPage(rest))
            fault("not on " + rest + " but on " + driver.page());
        listen();
        break;
    case '!':
        lines << "  " + rest + ":";
        stops.clear();
        happenings.value(rest)(driver);
        listen();
        break;
    default:
        lines << "  " + keyWord(words) + ":";
        if (words != "Tab")
            heardHere.clear();
        press(words);
    }
}

// What opens a dialog returns when the dialog has gone: the steps in it are played by a timer meanwhile.
void StoryTeller::playDialog(const QString &key, const QStringList &steps, const Happenings &happenings)
{
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, &look, [&] {
        if (!QApplication::activeModalWidget())
            return;
        look.stop();
        listen();
        for (const QString &words : steps)
            step(words, happenings);
    });
    look.start(20);
    lines << "  " + keyWord(key) + ":";
    heardHere.clear();
    press(key);
    // Some come up a while after the key.
    if (!Driver::waitFor([&look] { return !look.isActive(); }))
        fault("no dialog");
    heardHere.clear();
}

void StoryTeller::open(const Story &story)
{
    wrong.clear();
    heardHere.clear();
    driver.world.reset();
    Driver::writeReadersConf(QByteArray(reader) + "=E65535\r\n");
    driver.openWindow();
    driver.window->installEventFilter(answers.get());
    if (!Driver::waitFor([this] { return driver.window->isActiveWindow(); }) || !ear.waitForProgram())
        fault("the window does not come up");
    if (story.card[0] && !driver.showCard(story.card, reader, story.prepare))
        fault("the card is not read");
    // How a card is read is a story of its own.
    const QVector<Heard> before = ear.hear([this] {
        seenSinceBell.clear();
        snapshot();
    });
    for (const Heard &heard : before)
        last = heard;
    seen = seenSinceBell;
}

void StoryTeller::play(const Story &story, const Happenings &happenings)
{
    lines = QStringList { "", story.state, QString(story.state.size(), '-') };
    if (!last.name.isEmpty())
        lines << "    " + spokenLine(last);
    heardHere << last.words();
    for (int i = 0; i < story.steps.size(); ++i) {
        if (!story.steps[i].startsWith('(')) {
            step(story.steps[i], happenings);
            continue;
        }
        const int end = story.steps.indexOf(")", i);
        playDialog(story.steps[i].mid(1), story.steps.mid(i + 1, end - i - 1), happenings);
        i = end;
    }
    protocols[story.page] << lines;
}

void StoryTeller::close()
{
    driver.world.clearFaults();
    driver.world.release();
    driver.closeWindow();
    ear.hear();
    last = {};
    QFile::remove(Driver::readersConfPath());
}

void StoryTeller::writeProtocols() const
{
    const QDir folder(VELMOR_SPOKEN_FOLDER);
    folder.mkpath(".");
    for (auto page = protocols.cbegin(); page != protocols.cend(); ++page) {
        QFile file(folder.filePath(page.key() + ".txt"));
        if (file.open(QIODevice::WriteOnly))
            file.write((page.value().join('\n').trimmed() + '\n').toUtf8());
    }
}
