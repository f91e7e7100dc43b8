#include "panel/panel_resources.h"

#include <QtCore/qglobal.h>

void loadPanelResources()
{
    Q_INIT_RESOURCE(panel);
}
