#include "browser/profile_text.h"

#include "base/common.h"

#include <functional>

namespace ProfileText {

namespace {

const QLatin1String lineEnd("\r\n");
// In the library's file name, whatever its folder, width and extension.
constexpr char moduleMark[] = "velmor-pkcs11";

// Hands on each line without its end, one after the other: a list of all lines of a large file takes too much memory.
void forEachLine(const QString &text, const std::function<void(const QStringRef &line)> &take)
{
    int start = 0;
    for (int end = text.indexOf(lineEnd); end >= 0; end = text.indexOf(lineEnd, start)) {
        take(text.midRef(start, end - start));
        start = end + lineEnd.size();
    }
    take(text.midRef(start));
}

bool isLibraryLine(const QStringRef &trimmed)
{
    const int sign = trimmed.indexOf('=');
    const QStringRef key = sign < 0 ? trimmed : trimmed.left(sign);
    return key.trimmed().compare(QLatin1String("library"), Qt::CaseInsensitive) == 0;
}

} // namespace

QString moduleEntry(const QString &module, const QString &name, const QString &params)
{
    return QString("{endln}library=%1{endln}name=%2{endln}NSS=%3{endln}")
        .arg(module, name, params)
        .replace("{endln}", lineEnd);
}

bool hasModule(const QString &pkcs11, const QString &module)
{
    return pkcs11.contains(module);
}

std::optional<QString> withoutModule(const QString &pkcs11)
{
    QString rest;
    bool found = false;
    bool ours = false;
    // From one library= line to the next all lines belong to the same entry.
    forEachLine(pkcs11, [&](const QStringRef &line) {
        const QStringRef trimmed = line.trimmed();
        if (trimmed.isEmpty())
            return;
        if (isLibraryLine(trimmed)) {
            const int sign = trimmed.indexOf('=');
            ours = sign >= 0 && trimmed.mid(sign + 1).contains(QLatin1String(moduleMark));
        }
        if (ours)
            found = true;
        else
            rest.append(line).append(lineEnd);
    });
    if (!found)
        return std::nullopt;
    return rest;
}

QString withPreference(const QString &userJs, const QString &key, const QString &value)
{
    QString text;
    // The autoload preference goes whatever the key is, which is meant.
    forEachLine(userJs, [&text](const QStringRef &line) {
        const QStringRef trimmed = line.trimmed();
        if (!trimmed.isEmpty() && !trimmed.contains(QLatin1String(autoloadKey)))
            text.append(line).append(lineEnd);
    });
    return text + QString("user_pref(\"%1\", %2);%3").arg(key, value, lineEnd);
}

bool autoloads(const QString &userJs)
{
    return sliceTextChain(userJs, { QString("^%1$").arg(autoloadKey), "^,$", "^)^" }).contains("true");
}

} // namespace ProfileText
