#include "spoken/ear.h"

#include <QAccessible>
#include <QApplication>
#include <QDeadlineTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLineEdit>
#include <QThread>

#include <functional>

namespace {

constexpr int patience = 20000;

bool runUntil(const std::function<bool()> &condition, int milliseconds = patience)
{
    const QDeadlineTimer deadline(milliseconds);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::usleep(300);
    }
    return true;
}

// That a key has come and was let go, as a widget sees it: before that, it makes a way to those who listen to the
// keyboard over AT-SPI.
class KeyWatch : public QObject {
public:
    KeyWatch() { qApp->installEventFilter(this); }

    bool eventFilter(QObject *object, QEvent *event) override
    {
        if (object->isWidgetType()) {
            seenDown = seenDown || event->type() == QEvent::KeyPress;
            seenUp = seenUp || event->type() == QEvent::KeyRelease;
        }
        return false;
    }

    bool seenDown = false;
    bool seenUp = false;
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
    return runUntil([this] { return ask().trimmed() != "null"; });
}

QByteArray Ear::ask()
{
    // An event of its own behind all others, by which the listener knows that it has them.
    QAccessibleTextInsertEvent ring(bell.get(), ++rung, "!");
    QAccessible::updateAccessibility(&ring);
    listener.write(QByteArray::number(rung) + '\n');
    runUntil([this] { return listener.canReadLine() || listener.state() == QProcess::NotRunning; });
    return listener.readLine();
}

QVector<Heard> Ear::hear()
{
    // Timers without delay and posted events: what follows from a key at once.
    for (int i = 0; i < 3; ++i)
        QCoreApplication::processEvents();
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
    const KeyWatch watch;
    keyboard.write("key --delay 0 " + key.toLatin1() + '\n');
    return runUntil([&watch] { return watch.seenDown; }, 5000)
        // A dialog that the key has closed sees no release.
        && (runUntil([&watch] { return watch.seenUp; }, 300) || true);
}
