#include "platform/card_software.h"

namespace CardSoftware {

QString line(const QString &name, const QString &version)
{
    return name + " Ver: " + version;
}

QString narrowLine(const QString &name, const QString &width, const QString &version)
{
    return name + QString(" (%1-bit) Ver: ").arg(width) + version;
}

QStringList lines(const Lookup &lookup)
{
    QStringList found;
    for (const char *word : vendorWords) {
        const Program wide = lookup(word, 64);
        if (!wide["version"].isEmpty())
            found << line(wide["name"], wide["version"]);
        const Program narrow = lookup(word, 32);
        if (!narrow["version"].isEmpty())
            found << narrowLine(narrow["name"], narrow.value("appBits").isEmpty() ? "32" : narrow["appBits"],
                                narrow["version"]);
    }
    found.removeDuplicates();
    found.sort(Qt::CaseSensitive);
    return found;
}

} // namespace CardSoftware
