#include "states.h"

QVector<State> allStates()
{
    QVector<State> all;
    for (const auto &part : { homeStates, pageStates, pinStates, helpStates, settingsStates, shellStates, panelStates })
        all += part();
    return all;
}
