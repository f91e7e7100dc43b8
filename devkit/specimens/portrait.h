#pragma once

#include <QByteArray>
#include <QImage>

#include "specimens/person.h"

namespace specimen {

inline constexpr int portraitWidth = 300;
inline constexpr int portraitHeight = 400;

// A drawn head and shoulders in the manner of a document photo.
QImage drawPortrait(const Look &look);
QByteArray toJpeg(const QImage &image);

} // namespace specimen
