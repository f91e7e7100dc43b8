#include "app/app_paths.h"

namespace AppPaths {

Row of(const QString &platform)
{
    static const Row rows[] = {
        { "mac", "/Contents/Resources", "/Contents/Resources", "/Contents/lib", "/Contents/MacOS" },
        { "lin", "/statics", "/Licenses", "/", "/" },
        { "win", "/statics", "/Licenses", "/%1", "/%1" },
    };
    for (const Row &candidate : rows) {
        if (platform == candidate.platform)
            return candidate;
    }
    return { "", "", "", "", "" };
}

QString bits(const QString &arch)
{
    static const struct {
        const char *arch;
        const char *bits;
    } rows[] = {
        { "i386", "32" },
        { "x86_64", "64" },
        { "arm64", "arm64" },
    };
    for (const auto &candidate : rows) {
        if (arch == candidate.arch)
            return candidate.bits;
    }
    return "unknown-arch";
}

QString libraryFile(const QString &product, const QString &arch, const QString &extension)
{
    const QString width = QString(arch).replace("i386", "32").replace("x86_64", "64");
    return QString("%1-pkcs11-%2.%3").arg(product, width, extension);
}

} // namespace AppPaths
