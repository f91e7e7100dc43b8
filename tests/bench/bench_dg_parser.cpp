#include "card/card-parser.h"

#include <QElapsedTimer>
#include <QString>

#include <algorithm>
#include <cstdio>
#include <limits>

// Prints what reading DG11 and DG2 costs for each MiB of file, and that it costs no more of a large one. Rows "what |
// value | limit". Each file makes the search run from one end to the other: the fields of DG11 stand in front, and are
// searched from behind; the picture of DG2 stands last, and is searched from the front.
namespace {

constexpr int kib = 1024;
constexpr int smallFile = 256 * kib;
constexpr int largeFile = 2048 * kib;
constexpr int repetitions = 15;

void discard(QtMsgType, const QMessageLogContext &, const QString &) { }

QByteArray dg11File(int size, char fill)
{
    const QByteArray fields = QByteArray::fromHex("6B835C00005F100B") + "84052312345" + QByteArray::fromHex("5F1104")
        + "LODZ" + QByteArray::fromHex("5F2B08") + "19840523";
    return fields + QByteArray(size - fields.size(), fill);
}

QByteArray dg2File(int size, char fill)
{
    const QByteArray marker = QByteArray::fromHex("FFD8");
    QByteArray file(size - marker.size(), fill);
    file.replace(0, 4, QByteArray::fromHex("7582FFFF"));
    return file + marker;
}

// The best of several runs, in microseconds for each MiB.
template <typename Read>
double perMib(const char *group, const QByteArray &file, Read read)
{
    qint64 best = std::numeric_limits<qint64>::max();
    for (int repetition = 0; repetition < repetitions; ++repetition) {
        DGParser parser;
        parser.loadDg(group, file);
        QElapsedTimer timer;
        timer.start();
        read(parser);
        best = std::min(best, timer.nsecsElapsed());
    }
    return static_cast<double>(best) / 1000.0 * (1024.0 * kib) / file.size();
}

template <typename Make, typename Read>
void printRow(const char *name, const char *group, Make make, Read read)
{
    const double small = perMib(group, make(smallFile), read);
    const double large = perMib(group, make(largeFile), read);
    std::printf("%s, of 2 MiB | %.0f us a MiB |\n", name, large);
    std::printf("the same beside 256 KiB, a MiB | %.2f times | 2 times, so it is linear\n", large / small);
}

} // namespace

int main()
{
    qInstallMessageHandler(discard);
    const auto readDg11 = [](DGParser &parser) {
        return parser.personalNumber() + parser.birthPlace() + parser.birthDate();
    };
    const auto readDg2 = [](DGParser &parser) { return parser.photo(); };

    printRow(
        "DG11, three fields, zeros", "DG11", [](int size) { return dg11File(size, '\0'); }, readDg11);
    printRow(
        "DG11, three fields, half tags", "DG11", [](int size) { return dg11File(size, '\x5F'); }, readDg11);
    printRow(
        "DG2, picture, zeros", "DG2", [](int size) { return dg2File(size, '\0'); }, readDg2);
    printRow(
        "DG2, picture, half markers", "DG2", [](int size) { return dg2File(size, '\xFF'); }, readDg2);
    return 0;
}
