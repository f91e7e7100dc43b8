#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

// What a fuzz target supplies. It runs under libFuzzer and under a driver of our own (fuzz_driver.cpp), which needs no
// special compiler. Both start from the files of corpus/TARGET.

// Takes one input; aborts with a word on standard error if what came out is wrong.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

namespace Fuzz {

[[noreturn]] inline void fail(const QString &what)
{
    std::fprintf(stderr, "%s\n", qPrintable(what));
    std::abort();
}

inline void require(bool holds, const QString &what)
{
    if (!holds)
        fail(what);
}

inline void discard(QtMsgType, const QMessageLogContext &, const QString &) { }

// What is logged would be most of the time that a run takes.
inline void silence()
{
    static const QtMessageHandler before = qInstallMessageHandler(discard);
    Q_UNUSED(before)
}

// An input of several texts: they are parted by lines that hold "%%" alone. Always `count` of them, missing ones empty.
inline QList<QByteArray> parts(const std::uint8_t *data, std::size_t size, int count)
{
    const QByteArray separator = "\n%%\n";
    QList<QByteArray> found;
    QByteArray rest(reinterpret_cast<const char *>(data), static_cast<int>(size));
    while (found.size() < count - 1) {
        const int at = rest.indexOf(separator);
        found << rest.left(at);
        rest = at < 0 ? QByteArray() : rest.mid(at + separator.size());
    }
    return found << rest;
}

} // namespace Fuzz
