#include "fuzz/fuzz_target.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

// Feeds a fuzz target with the files of a folder and then with changed copies of them. The same numbers give the same
// inputs on every machine, since only the generator itself is taken from the library. What fails is told in base 64.
namespace {

constexpr char usage[] = "usage: %s FOLDER COUNT [RANDOM-SEED], or %s FILE\n";

using Random = std::mt19937;

// Bytes that lengths and tests turn on.
constexpr char edges[] = { '\x00', '\x01', '\x02', '\x7E', '\x7F', '\x80', '\x81', '\x82', '\x83', '\xFE', '\xFF' };

// For the report of a failure, made before the input is fed.
QByteArray inputName;
QByteArray inputText;

int below(Random &random, int limit)
{
    return limit > 0 ? static_cast<int>(random() % static_cast<unsigned>(limit)) : 0;
}

void change(QByteArray &input, Random &random, const QByteArray &other)
{
    const int position = below(random, input.size());
    const int length = 1 + below(random, 16);
    switch (below(random, 8)) {
    case 0:
        input.truncate(position);
        break;
    case 1:
        input.remove(position, length);
        break;
    case 2:
        input.insert(position, other.mid(below(random, other.size()), length));
        break;
    case 3:
        input.insert(position, input.mid(below(random, input.size()), length));
        break;
    case 4:
        input = input.left(position) + other.mid(below(random, other.size()));
        break;
    case 5:
        if (!input.isEmpty())
            input[position] = static_cast<char>(random());
        break;
    case 6:
        if (!input.isEmpty())
            input[position] = static_cast<char>(input.at(position) ^ (1 << below(random, 8)));
        break;
    default:
        if (!input.isEmpty())
            input[position] = edges[below(random, sizeof edges)];
    }
}

// From a block of exactly its size, so that a sanitizer sees each step outside.
void feed(const QByteArray &input, const QByteArray &name)
{
    inputName = name;
    inputText = input.toBase64();
    const std::unique_ptr<std::uint8_t[]> block(new std::uint8_t[static_cast<std::size_t>(input.size())]);
    std::copy(input.cbegin(), input.cend(), reinterpret_cast<char *>(block.get()));
    LLVMFuzzerTestOneInput(block.get(), static_cast<std::size_t>(input.size()));
}

void tellInput(int signal)
{
    std::fprintf(stderr, "input %s, in base 64: %s\n", inputName.constData(), inputText.constData());
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "cannot read %s\n", qPrintable(path));
        std::exit(2);
    }
    return file.readAll();
}

} // namespace

int main(int argc, char *argv[])
{
    const QString path = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QString();
    std::signal(SIGABRT, tellInput);
    std::signal(SIGSEGV, tellInput);
    if (argc == 2 && QFile(path).exists() && !QDir(path).exists()) {
        feed(contentOf(path), QFile::encodeName(path));
        return 0;
    }
    const long count = argc > 2 ? std::strtol(argv[2], nullptr, 10) : -1;
    const QDir folder(path);
    const QStringList names = folder.entryList(QDir::Files, QDir::Name);
    if (count < 0 || names.isEmpty()) {
        std::fprintf(stderr, usage, argv[0], argv[0]);
        return 2;
    }
    Random random(argc > 3 ? static_cast<unsigned>(std::strtoul(argv[3], nullptr, 10)) : 1u);

    feed({}, "nothing");
    std::vector<QByteArray> corpus;
    for (const QString &name : names) {
        corpus.push_back(contentOf(folder.filePath(name)));
        feed(corpus.back(), name.toUtf8());
    }
    for (long done = 0; done < count; ++done) {
        QByteArray input = corpus[random() % corpus.size()];
        for (int changes = 1 + below(random, 6); changes > 0; --changes)
            change(input, random, corpus[random() % corpus.size()]);
        feed(input, "changed " + QByteArray::number(static_cast<qlonglong>(done)));
    }
    std::printf("%zu files, %ld changed copies\n", corpus.size(), count);
    return 0;
}
