#include "panel/panel_world.h"

#include "simworld/commands.h"

#include <algorithm>
#include <chrono>

namespace {

constexpr std::chrono::milliseconds lookInterval { 250 };

} // namespace

PanelWorld::PanelWorld()
{
    look.setInterval(lookInterval);
    connect(&watcher, &WorldWatcher::changed, this, &PanelWorld::changed);
    connect(&watcher, &WorldWatcher::gone, this, &PanelWorld::gone);
    connect(this, &PanelWorld::changed, this, &PanelWorld::followKeypad);
    connect(&look, &QTimer::timeout, this, [this] {
        const int now = sim().waitingCalls();
        if (std::exchange(waiting, now) != now)
            emit changed();
    });
    followKeypad();
}

void PanelWorld::followKeypad()
{
    if (!reader().pinpad)
        look.stop();
    else if (!look.isActive())
        look.start();
}

sim::Reader PanelWorld::reader() const
{
    const std::vector<sim::Reader> all = readers();
    const auto found =
        std::find_if(all.begin(), all.end(), [this](const auto &reader) { return reader.name == chosen; });
    if (found != all.end())
        return *found;
    return all.empty() ? sim::Reader() : all.front();
}

void PanelWorld::choose(const QString &readerName)
{
    chosen = readerName.toStdString();
    emit changed();
}

bool PanelWorld::takeOut(const std::string &card)
{
    for (const sim::Reader &other : readers()) {
        if (other.card == card)
            return sim().removeCard(other.name);
    }
    return false;
}

void PanelWorld::toggleCard(const std::string &card)
{
    const std::vector<sim::Reader> all = readers();
    if (std::any_of(all.begin(), all.end(), [&card](const auto &reader) { return reader.card == card; })) {
        tell(takeOut(card));
        return;
    }
    const sim::Reader target = reader();
    if (!target.card.empty() && !sim().removeCard(target.name)) {
        tell(false);
        return;
    }
    tell(sim().insertCard(target.name.empty() ? sim::defaultReaderName : target.name, card));
}

void PanelWorld::tell(bool done)
{
    if (!done)
        emit refused(QString::fromStdString(sim().error()));
    emit changed();
}
