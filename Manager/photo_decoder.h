#pragma once

#include <QByteArray>
#include <QImage>

// The picture of a card's photo, null if it cannot be read or is not of a sensible size. A few bytes can claim a
// picture that fills the memory, or one so narrow that it would when it is fitted to its place.
QImage decodedPhoto(const QByteArray &bytes);
