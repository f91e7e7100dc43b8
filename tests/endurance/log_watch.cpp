#include "endurance/log_watch.h"

#include "simworld/world_state.h"

#include <QString>

#include <atomic>
#include <cstdio>
#include <iterator>

namespace {

std::atomic<int> sslCount { 0 };
std::atomic<int> listCount { 0 };
std::atomic<bool> slotWithoutName { false };
std::atomic<int> slotsOfCards { 0 };
std::atomic<int> tokensOfCards { 0 };

void watch(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    sslCount += message == "SSL loaded";
    listCount += message == "load new readers" || message == "Loading readers from ipc:"
        || message.startsWith("New reders detected");
    if (message.startsWith("Found slots")) {
        slotWithoutName = false;
        slotsOfCards = 0;
    } else if (message.startsWith("Slot 0x")) {
        slotWithoutName = slotWithoutName || message.trimmed().endsWith(':');
        slotsOfCards += message.contains(" #");
    } else if (message.startsWith("select reader: ")) {
        tokensOfCards = 0;
    } else if (message.startsWith("Token 0x")) {
        // Without a label it is of no card.
        tokensOfCards += !message.trimmed().endsWith(':');
    }
    if (LogWatch::loud() || type == QtFatalMsg)
        std::fprintf(stderr, "%s\n", qPrintable(message));
}

} // namespace

void LogWatch::begin()
{
    qInstallMessageHandler(watch);
}

int LogWatch::sslLoaded()
{
    return sslCount;
}

int LogWatch::listsTaken()
{
    return listCount;
}

bool LogWatch::foundInPart()
{
    constexpr int whole = int(std::size(sim::containers));
    return slotWithoutName || slotsOfCards % whole != 0 || tokensOfCards % whole != 0;
}

bool LogWatch::loud()
{
    static const bool wanted = qEnvironmentVariableIsSet("VELMOR_ENDURANCE_LOG");
    return wanted;
}
