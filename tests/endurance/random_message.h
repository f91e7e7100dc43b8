#pragma once

#include <QByteArray>

#include <random>

// Text of a message to the window as anybody can send one: known commands that ask for no reader and for no end,
// unknown ones, wrong addresses, broken text.
inline QByteArray randomMessage(std::mt19937 &lot)
{
    static const char *const bodies[] = {
        "<windowFocus>1</windowFocus>",
        "<settings>1</settings>",
        "<help>1</help>",
        "<checkForUpdate>1</checkForUpdate>",
        "<isCard>1</isCard>",
        "<diagnoseReaders>czytnik</diagnoseReaders>",
        "<unknown>\x01\xFF</unknown>",
        "<canAppStatus>canClosed</canAppStatus>",
        "<",
        "<to>",
        "\xC3\x28",
    };
    QByteArray text = QByteArray("<from>velmor_monitor</from>") + bodies[lot() % std::size(bodies)];
    text += lot() % 8 == 0 ? "<to>velmor_can</to>" : "<to>velmor_manager</to>";
    if (lot() % 6 == 0)
        text.truncate(int(lot() % unsigned(text.size())));
    return text;
}
