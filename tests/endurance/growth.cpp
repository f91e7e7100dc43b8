#include "endurance/growth.h"

#include <cstdio>

namespace {

constexpr double allowedGrowth = 1.05;
// With some room. What the toolkit keeps of its own, pictures above all, is reached after a few cards.
constexpr long mostHeap = 16 * 1024; // KiB

QStringList growthOfMemory(const OwnResources &first, const OwnResources &last, long cost)
{
    QStringList found;
    const double heap = double(last.heapKiB - cost) / double(first.heapKiB);
    std::printf("growth without it: heap %.3f, resident %.3f with it\n", heap,
                double(last.residentKiB) / double(first.residentKiB));
    if (heap > allowedGrowth)
        found << QString("the heap has grown to %1").arg(heap);
    if (first.heapKiB > mostHeap)
        found << QString("the heap has %1 KiB from the beginning").arg(first.heapKiB);
    const double resident = double(last.residentKiB - cost) / double(first.residentKiB);
    if (resident > allowedGrowth)
        found << QString("the process has grown to %1").arg(resident);
    return found;
}

} // namespace

QStringList growthBeyondLimits(const OwnResources &first, const OwnResources &last, long cost)
{
    QStringList found;
    // The allocator of the address sanitizer keeps what was freed, and no books for us.
    if (first.heapKiB > 0)
        found = growthOfMemory(first, last, cost);
    if (last.descriptors > first.descriptors)
        found << "more descriptors than before";
    if (last.threads > first.threads)
        found << "more threads than before";
    if (last.children > 0)
        found << "a child process is left";
    if (last.segments > first.segments)
        found << "more segments than before";
    return found;
}
