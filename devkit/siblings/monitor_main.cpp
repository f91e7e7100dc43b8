// velmor_monitor: the stand-in of the resident Monitor. Ends by itself when its world goes.
#include "app/app.h"
#include "siblings/monitor.h"
#include "siblings/sibling.h"

#include <QCoreApplication>

int main(int argc, char *argv[])
{
    Sibling::setUp("Monitor", "Monitor");
    const QCoreApplication application(argc, argv);
    if (!App::instance()->lock())
        return 1;
    const Monitor monitor(*App::instance());
    QObject::connect(&monitor, &Monitor::finished, &application, &QCoreApplication::quit);
    return QCoreApplication::exec();
}
