#pragma once

#include <QByteArray>

// The shared-memory segments of the family: each program has one, which is its instance lock and its inbox.
namespace Segment {

// Bytes of each; a longer message is cut.
constexpr int size = 500;

// "velmor_manager" for the product "velmor" and the program "Manager": the segment's key, and the program's address.
inline QByteArray key(const QByteArray &product, const QByteArray &program)
{
    return product + '_' + program.toLower();
}

} // namespace Segment
