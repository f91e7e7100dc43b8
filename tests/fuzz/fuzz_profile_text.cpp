#include "base/common.h"
#include "browser/profile_text.h"
#include "fuzz/fuzz_target.h"

#include <QString>
#include <QStringList>

#include <algorithm>

// The files of a browser's profile, whatever stands in them: both edits and both checks.
namespace {

using namespace ProfileText;
using Fuzz::require;

const QString module("/opt/velmor/velmor-pkcs11-64.so");

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

// The patterns by which these files are read, against a search by hand. Of a text, its lines are marks as well.
void checkSlices(const QString &text)
{
    require(sliceText(text, "^^", "none") == "none", "a pattern without a mark");
    const QStringList marks = text.split('\n').mid(0, 4) + QStringList("=");
    for (const QString &mark : marks) {
        for (const char *ends : { "^^", "^$", "$^", "$$" }) {
            if (mark.isEmpty())
                continue;
            const int first = text.indexOf(mark);
            const int at = ends[0] == '^' ? first : text.lastIndexOf(mark);
            const QString found = sliceText(text, ends[0] + mark + ends[1], "none");
            const QString kept = ends[1] == '$' ? text.mid(at + mark.size()) : text.left(at);
            require(found == (first < 0 ? "none" : kept), "another slice than the mark leaves");
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<int>(size));
    checkModules(text);
    checkPreference(text);
    checkSlices(text);
    return 0;
}
