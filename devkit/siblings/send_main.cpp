// velmor_send: one message by hand.
#include "app/app_lock.h"
#include "base/platform.h"
#include "ipc/ipc.h"

#include <QCoreApplication>

#include <cstdio>

namespace {

constexpr char usage[] =
    "velmor_send [--from NAME] TO KEY VALUE [KEY VALUE ...]\n"
    "Sends one message, to velmor_manager for example, and ends with 0 if it was taken, 1 if not.\n";

} // namespace

int main(int argc, char *argv[])
{
    Platform::distrustCurrentFolder();
    enum { taken, notTaken, notUnderstood };
    Platform::usePrivateTempDir("velmor");
    const QCoreApplication application(argc, argv);
    QStringList words = QCoreApplication::arguments().mid(1);
    Ipc ipc;
    ipc.setName("velmor_send");
    if (words.size() >= 2 && words.first() == "--from") {
        ipc.setName(words.at(1).toUtf8());
        words = words.mid(2);
    }
    // An address and pairs.
    if (words.size() < 3 || words.size() % 2 == 0) {
        std::fputs(usage, stderr);
        return notUnderstood;
    }
    IpcMsg message;
    message.setTo(words.first().toUtf8());
    for (int i = 1; i < words.size(); i += 2)
        message.setParam(words.at(i).toUtf8(), words.at(i + 1).toUtf8());
    return ipc.send(message) ? taken : notTaken;
}
