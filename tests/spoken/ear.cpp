#include "spoken/ear.h"

#include <QAccessible>
#include <QApplication>
#include <QDeadlineTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLineEdit>
#include <QPointer>
#include <QTimer>
#include <QWindow>
#include <QtTest>

namespace {

// Only against waiting for ever: no busy machine is as slow as that.
constexpr int patience = 100000;

// For conditions that only an event of this thread can make true. While they are not, this is done now and then.
bool runUntil(const std::function<bool()> &condition, const std::function<void()> &meanwhile = {})
{
    constexpr int nowAndThen = 500;
    const QDeadlineTimer deadline(patience);
    QTimer wake;
    if (meanwhile)
        QObject::connect(&wake, &QTimer::timeout, &wake, meanwhile);
    wake.start(nowAndThen);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

// The window that the next key goes to: the display tells it a while after the window has come up.
bool keysArrive()
{
    if (QApplication::activePopupWidget())
        return true;
    const QWidget *dialog = QApplication::activeModalWidget();
    const QWindow *window = QGuiApplication::focusWindow();
    return window && (!dialog || window == dialog->windowHandle());
}

// That a key has come and was let go, as a widget sees it: before that, it makes a way to those who listen to the
// keyboard over AT-SPI.
class KeyWatch : public QObject {
public:
    KeyWatch() { qApp->installEventFilter(this); }

    bool eventFilter(QObject *object, QEvent *event) override
    {
        if (!object->isWidgetType())
            return false;
        if (event->type() == QEvent::KeyPress && !pressed) {
            pressed = true;
            window = static_cast<QWidget *>(object)->window();
        }
        // One before the press is of an earlier key, whose window went at the press.
        released = released || (pressed && event->type() == QEvent::KeyRelease);
        return false;
    }

    // What the key has closed sees no release.
    bool isDone() const { return released || (pressed && (!window || !window->isVisible())); }

private:
    bool pressed = false;
    bool released = false;
    QPointer<QWidget> window;
};

QStringList strings(const QJsonValue &value)
{
    QStringList result;
    for (const QJsonValue &item : value.toArray())
        result << item.toString();
    return result;
}

} // namespace

QStringList Heard::words() const
{
    QStringList all = groups;
    all << name << description;
    // Of a field with a secret nothing is said but that it is filled.
    if (role != "password text")
        all << text;
    all.removeAll(QString());
    all.removeDuplicates();
    return all;
}

Ear::Ear()
{
    bell = std::make_unique<QLineEdit>();
    listener.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    keyboard.setProcessChannelMode(QProcess::ForwardedChannels);
}

Ear::~Ear()
{
    for (QProcess *process : { &listener, &keyboard }) {
        process->closeWriteChannel();
        if (!process->waitForFinished(2000))
            process->kill();
        process->waitForFinished(2000);
    }
}

bool Ear::start()
{
    keyboard.start("xdotool", { "-" });
    // Debian's own interpreter, since the modules are Debian's.
    listener.start(
        "/usr/bin/python3",
        { "-B", VELMOR_TEST_SOURCE_DIR "/tests/spoken/ear.py", QString::number(QCoreApplication::applicationPid()) });
    return listener.waitForStarted() && keyboard.waitForStarted();
}

bool Ear::waitForProgram()
{
    // The bus tells this thread nothing of it.
    return QTest::qWaitFor([this] { return ask().trimmed() != "null"; }, patience);
}

QByteArray Ear::ask()
{
    // An event of its own behind all others, by which the listener knows that it has them. Once more if nothing comes:
    // until the bus has told the toolkit that somebody listens, it sends none.
    const auto ring = [this] {
        QAccessibleTextInsertEvent event(bell.get(), rung, "!");
        QAccessible::updateAccessibility(&event);
    };
    ++rung;
    ring();
    listener.write(QByteArray::number(rung) + '\n');
    // An answer that is given up would be taken for that to the next question.
    if (!runUntil([this] { return listener.canReadLine(); }, ring))
        qFatal("the ear does not answer");
    return listener.readLine();
}

QVector<Heard> Ear::hear(const std::function<void()> &atTheEnd)
{
    // Timers without delay and posted events: what follows from a key at once.
    for (int i = 0; i < 3; ++i)
        QCoreApplication::processEvents();
    atTheEnd();
    QVector<Heard> all;
    for (const QJsonValue &value : QJsonDocument::fromJson(ask()).array()) {
        const QJsonObject told = value.toObject();
        all << Heard { told["kind"].toString(), told["path"].toString(),        told["role"].toString(),
                       told["name"].toString(), told["description"].toString(), told["text"].toString(),
                       strings(told["states"]), strings(told["groups"]) };
    }
    return all;
}

bool Ear::press(const QString &key)
{
    if (!runUntil(keysArrive))
        return false;
    const KeyWatch watch;
    keyboard.write("key --delay 0 " + key.toLatin1() + '\n');
    return runUntil([&watch] { return watch.isDone(); });
}
