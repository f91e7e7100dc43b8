#include "fuzz/fuzz_target.h"

#include <algorithm>
#include <random>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t *data, std::size_t size, std::size_t maxSize);

// Lets a run start from the seeds without a folder of files: an empty input, and now and then another one, is replaced
// by a seed before libFuzzer changes it.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t *data, std::size_t size, std::size_t maxSize, unsigned seed)
{
    constexpr unsigned oneIn = 50;
    static const std::vector<QByteArray> seeds = fuzzSeeds();

    std::minstd_rand random(seed);
    if (size <= 1 || random() % oneIn == 0) {
        const QByteArray &chosen = seeds[random() % seeds.size()];
        size = std::min(maxSize, static_cast<std::size_t>(chosen.size()));
        std::copy_n(chosen.constData(), size, data);
    }
    return LLVMFuzzerMutate(data, size, maxSize);
}
