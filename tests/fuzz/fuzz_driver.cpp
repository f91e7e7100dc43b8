#include "fuzz/fuzz_target.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>

// Feeds a fuzz target with its seeds and then with changed copies of them: usage COUNT [RANDOM-SEED]. The same numbers
// give the same inputs on every machine, since only the generator itself is taken from the library.
namespace {

using Random = std::mt19937;

// Bytes that lengths and tests turn on.
constexpr char edges[] = { '\x00', '\x01', '\x02', '\x7E', '\x7F', '\x80', '\x81', '\x82', '\x83', '\xFE', '\xFF' };

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
void feed(const QByteArray &input)
{
    const std::unique_ptr<std::uint8_t[]> block(new std::uint8_t[static_cast<std::size_t>(input.size())]);
    std::copy(input.cbegin(), input.cend(), reinterpret_cast<char *>(block.get()));
    LLVMFuzzerTestOneInput(block.get(), static_cast<std::size_t>(input.size()));
}

} // namespace

int main(int argc, char *argv[])
{
    const long count = argc > 1 ? std::strtol(argv[1], nullptr, 10) : 0;
    if (count <= 0) {
        std::fprintf(stderr, "usage: %s COUNT [RANDOM-SEED]\n", argv[0]);
        return 2;
    }
    Random random(argc > 2 ? static_cast<unsigned>(std::strtoul(argv[2], nullptr, 10)) : 1u);

    const std::vector<QByteArray> seeds = fuzzSeeds();
    feed({});
    for (const QByteArray &seed : seeds)
        feed(seed);
    for (long done = 0; done < count; ++done) {
        QByteArray input = seeds[random() % seeds.size()];
        for (int changes = 1 + below(random, 6); changes > 0; --changes)
            change(input, random, seeds[random() % seeds.size()]);
        feed(input);
    }
    std::printf("%ld inputs\n", count);
    return 0;
}
