// An empty window after the same two starts of the toolkit as the program's, and of the same size: what any program
// would need on this machine.
#include <QApplication>
#include <QWidget>

#include "base/platform.h"

int main(int argc, char *argv[])
{
    {
        const QApplication first(argc, argv);
    }
    Platform::choosePlatformPlugin();
    const QApplication application(argc, argv);
    QWidget window;
    window.resize(940, 717);
    window.show();
    return QApplication::exec();
}
