#include "platform/package_database_lin.h"

#include "base/own_environment.h"
#include "platform/card_software.h"

#include <QDebug>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>

#include <algorithm>
#include <chrono>
#include <memory>

namespace {

using PackageDatabase::Package;

// A busy computer needs seconds for what is done in 30 ms on an idle one.
constexpr std::chrono::milliseconds patience { 5000 };
// A killed process is gone at once, unless it hangs in the system itself.
constexpr std::chrono::milliseconds lastPatience { 200 };
constexpr char format[] = "${db:Status-Abbrev}\\t${Package}\\t${Version}\\t${Architecture}\\t${binary:Summary}\\n";
enum Field { Status, Name, Version, Architecture, Summary, FieldCount };

int bitsOf(const QString &architecture)
{
    static const char *const narrow[] = { "i386", "armel", "armhf", "mips", "mipsel", "powerpc", "x32" };
    const auto isIt = [&architecture](const char *word) { return architecture == word; };
    return std::any_of(std::begin(narrow), std::end(narrow), isIt) ? 32 : 64;
}

bool isForSmartCards(const Package &package)
{
    static const QRegularExpression words("smart[ -]?card|chip[ -]?card|pc/?sc|ccid",
                                          QRegularExpression::CaseInsensitiveOption);
    return words.match(package.name).hasMatch() || words.match(package.summary).hasMatch();
}

bool holds(const Package &package, const QString &text)
{
    // The word may be the last of either, and some words end in a blank.
    return (package.name + ' ').contains(text, Qt::CaseInsensitive)
        || (package.summary + ' ').contains(text, Qt::CaseInsensitive);
}

// A word with a blank at its end is no name of a program.
bool isNamed(const Package &package, const QString &word)
{
    return package.name.split('-').contains(word, Qt::CaseInsensitive);
}

bool isCardSoftware(const Package &package)
{
    const bool forSmartCards = isForSmartCards(package);
    const auto hits = [&package, forSmartCards](const char *word) {
        return isNamed(package, word) || (forSmartCards && holds(package, word));
    };
    return std::any_of(std::begin(CardSoftware::vendorWords), std::end(CardSoftware::vendorWords), hits);
}

void giveUp(std::unique_ptr<QProcess> process)
{
    process->kill();
    if (process->state() == QProcess::NotRunning || process->waitForFinished(static_cast<int>(lastPatience.count())))
        return;
    // Its destructor would wait half a minute.
    QProcess *hanging = process.release();
    QObject::connect(hanging, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), hanging,
                     &QObject::deleteLater);
}

} // namespace

namespace PackageDatabase {

Packages installed()
{
    const QString program = QStandardPaths::findExecutable("dpkg-query");
    if (program.isEmpty())
        return {};
    auto query = std::make_unique<QProcess>();
    auto environment = OwnEnvironment::forChild(OwnEnvironment::Child::Stranger);
    environment.insert("LC_ALL", "C.UTF-8");
    query->setProcessEnvironment(environment);
    query->setStandardErrorFile(QProcess::nullDevice());
    query->start(program, { "--show", "--showformat", format }, QIODevice::ReadOnly);
    if (!query->waitForFinished(static_cast<int>(patience.count())) || query->exitStatus() != QProcess::NormalExit
        || query->exitCode() != 0) {
        qDebug().noquote() << "no answer from" << program;
        giveUp(std::move(query));
        return {};
    }
    return parse(query->readAllStandardOutput());
}

Packages parse(const QByteArray &output)
{
    Packages packages;
    for (const QByteArray &line : output.split('\n')) {
        const QList<QByteArray> fields = line.split('\t');
        if (fields.size() < FieldCount || !fields[Status].startsWith("ii"))
            continue;
        // A tab in a summary is part of it.
        const QByteArray summary = QByteArrayList(fields.mid(Summary)).join(' ');
        packages << Package { QString::fromUtf8(fields[Name]), QString::fromUtf8(fields[Version]),
                              bitsOf(QString::fromUtf8(fields[Architecture])), QString::fromUtf8(summary) };
    }
    return packages;
}

QStringList cardSoftware(const Packages &packages)
{
    QStringList lines;
    for (const Package &package : packages) {
        if (!isCardSoftware(package))
            continue;
        lines << (package.bits == 64 ? CardSoftware::line(package.name, package.version)
                                     : CardSoftware::narrowLine(package.name, "32", package.version));
    }
    lines.removeDuplicates();
    lines.sort(Qt::CaseSensitive);
    return lines;
}

QString versionOf(const Packages &packages, const QString &text, int bits)
{
    const auto found = std::find_if(packages.cbegin(), packages.cend(), [&text, bits](const Package &package) {
        return package.bits == bits && holds(package, text);
    });
    return found == packages.cend() ? QString() : found->version;
}

} // namespace PackageDatabase
