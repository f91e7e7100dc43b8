#include "support/flow.h"

#include "app/app.h"
#include "support/widget_watch.h"

#include <QFile>

void Flow::setUpApplication()
{
    App::instance()->init("Menedżer", VELMOR_TEST_ROOT, "x86_64", "Manager");
    Driver::setUpApplication();
    watchWidgets();
}

Flow::Flow()
{
    world.reset();
}

Flow::~Flow()
{
    world.clearFaults();
    world.release();
    closeWindow();
    QFile::remove(readersConfPath());
}

QStringList Flow::calls() const
{
    QStringList result;
    for (const sim::TraceEntry &entry : world.trace()) {
        QString call = QString::fromStdString(entry.function);
        const auto container = entry.arguments.find("container");
        if (container != entry.arguments.end() && !container->second.empty())
            call += ' ' + QString::fromStdString(container->second);
        result << call;
    }
    return result;
}
