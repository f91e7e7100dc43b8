#include "browser/profile_text.h"
#include "fuzz/fuzz_target.h"

#include <QString>
#include <QStringList>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

// The files of a browser's profile, whatever stands in them: both edits and both checks.
namespace {

using namespace ProfileText;

const QString module("/opt/velmor/velmor-pkcs11-64.so");

void require(bool holds, const char *what)
{
    if (holds)
        return;
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

// The lines that an edit may keep: those with something in them.
QStringList linesOf(const QString &text)
{
    QStringList lines = text.split("\r\n");
    lines.erase(
        std::remove_if(lines.begin(), lines.end(), [](const QString &line) { return line.trimmed().isEmpty(); }),
        lines.end());
    return lines;
}

bool isSubsequence(const QStringList &part, const QStringList &whole)
{
    int found = 0;
    for (const QString &line : whole) {
        if (found < part.size() && part[found] == line)
            ++found;
    }
    return found == part.size();
}

void checkModules(const QString &text)
{
    const QString connected = text + moduleEntry(module, "velmor (64 bits)", "p");
    require(hasModule(connected, module), "an appended entry is not seen");
    const std::optional<QString> rest = withoutModule(connected);
    // What stands before the entry may run into its first line only if it is ours as well, and goes with it.
    require(rest.has_value(), "an appended entry is not found");
    require(rest->isEmpty() || rest->endsWith("\r\n"), "a line has no end");
    require(isSubsequence(linesOf(*rest), linesOf(text)), "a line is new or out of its place");
    require(!withoutModule(*rest), "an entry is left");
    require(!rest->contains("\r\n\r\n"), "an empty line is left");
    require(withoutModule(text).value_or(linesOf(text).join("\r\n")).trimmed() == rest->trimmed(),
            "the entry takes more with it than itself");
}

void checkPreference(const QString &text)
{
    for (const bool value : { true, false }) {
        const QString edited = withPreference(text, autoloadKey, value ? "true" : "false");
        require(autoloads(edited) == value, "the value is not the one that was set");
        require(edited.count(autoloadKey) == 1, "the key does not stand there once");
        require(withPreference(edited, autoloadKey, value ? "true" : "false") == edited,
                "a second run changes something");
        QStringList lines = linesOf(edited);
        require(lines.takeLast().startsWith("user_pref("), "the preference is not the last line");
        require(isSubsequence(lines, linesOf(text)), "a line is new or out of its place");
        const QStringList before = linesOf(text);
        require(lines.size() == before.size() - before.filter(autoloadKey).size(), "a line of something else is lost");
    }
}

} // namespace

std::vector<QByteArray> fuzzSeeds()
{
    const QByteArray others = "library=\r\nname=NSS Internal PKCS #11 Module\r\nNSS=Flags=internal\r\n\r\n"
                              "library=/usr/lib/p11-kit-proxy.so\r\nname=p11\r\n";
    const QByteArray entry =
        moduleEntry(module, "velmor (64 bits)", "slotParams={0x0=[slotFlags=PublicCerts]}").toUtf8();
    const QByteArray preferences = "// Mozilla\r\nuser_pref(\"a\", 1);\r\n\r\n";
    const QByteArray line = "user_pref(\"security.osclientcerts.autoload\", true);\r\n";
    return { others,
             others + entry,
             entry + others,
             "\tLIBRARY = velmor-pkcs11 \r\n \r\nlibrary\r\nname=x",
             QByteArray(others + entry).replace("\r\n", "\n"),
             preferences,
             preferences + line,
             "//" + line + preferences + line,
             QByteArray(line + preferences).replace("\r\n", "\n") };
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<int>(size));
    checkModules(text);
    checkPreference(text);
    return 0;
}
