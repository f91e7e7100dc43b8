#pragma once

#include "card/card-parser.h"
#include "card/cert_store.h"

#include <QImage>
#include <QMap>
#include <QString>

// The card in the reader as far as the window knows it, and what follows from that. No widgets here.
//
// It is filled by the answers of the worker in their order: counts of certificates, PIN states with data groups, the
// certificates, the photo. What is personal goes with `forgetHolder`; tries, words, keypad and chip stay until the next
// card's are told, since a PIN operation under way still asks for them.
struct CardInReader {
    CertStore certs;
    DGParser data;
    QImage photo; // null if there is none

    QMap<QString, int> tries; // of each PIN, by container
    QMap<QString, QString> words; // of each PIN button, as the card tells them
    int pukTries = 0;
    bool pinPad = false; // the reader has a keypad
    int chip = 0; // CardChip::chipType

    void forgetHolder();

    int triesOf(const QString &conteiner) const { return tries.value(conteiner, 0); }
    bool pukIsBlocked() const;
    // Whether the PUK is entered at the reader's keypad and not on the keyboard.
    bool pukGoesThroughPad() const;
    // Only Qualified has words of its own for a PIN that was never set.
    bool firstPinIsOffered(const QString &conteiner) const;
};
