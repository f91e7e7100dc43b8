#pragma once

#include <QString>

// Where things lie below the install root, by platform word.
namespace AppPaths {

struct Row {
    const char *platform;
    const char *documents;
    const char *license;
    // "%1" is the architecture's word of bits.
    const char *libraries;
    const char *programs;
};

// The row of a platform word; all empty for an unknown one.
Row of(const QString &platform);

// "32", "64", "arm64", or "unknown-arch".
QString bits(const QString &arch);

// Like velmor-pkcs11-64.dll.
QString libraryFile(const QString &product, const QString &arch, const QString &extension);

} // namespace AppPaths
