// velmor_can: the stand-in of the program that asks for a card's CAN.
#include "app/app.h"
#include "siblings/can_window.h"
#include "siblings/sibling.h"

#include <QApplication>

int main(int argc, char *argv[])
{
    Sibling::setUp("CAN", "Can");
    const QApplication application(argc, argv);
    if (!App::instance()->lock())
        return 1;
    CanWindow window(*App::instance());
    window.show();
    return QApplication::exec();
}
