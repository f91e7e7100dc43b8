#include "pkcs11/clean_memory.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

// Kept before each block: how long it is. As wide as the strictest alignment that plain new promises.
constexpr std::size_t header = alignof(std::max_align_t) > sizeof(std::size_t) ? alignof(std::max_align_t)
                                                                               : sizeof(std::size_t);

void overwrite(void *block, std::size_t size)
{
    std::memset(block, 0, size);
    // The compiler must take the bytes for read.
    __asm__ volatile("" : : "r"(block) : "memory");
}

} // namespace

namespace sim {

__attribute__((noinline)) void cleanStack()
{
    char deep[48 * 1024];
    overwrite(deep, sizeof deep);
    // The wide registers too, through which texts are copied: whoever binds a function late lays them on the stack.
    // Copies of each size take other ones.
    for (volatile std::size_t size = 8; size <= sizeof deep / 2; size = size * 2)
        std::memcpy(deep, deep + sizeof deep / 2, size);
    overwrite(deep, sizeof deep);
}

} // namespace sim

void *operator new(std::size_t size)
{
    char *block = static_cast<char *>(std::malloc(header + size));
    if (!block)
        throw std::bad_alloc();
    std::memcpy(block, &size, sizeof size);
    return block + header;
}

void operator delete(void *memory) noexcept
{
    if (!memory)
        return;
    char *block = static_cast<char *>(memory) - header;
    std::size_t size = 0;
    std::memcpy(&size, block, sizeof size);
    overwrite(block, header + size);
    std::free(block);
}

void operator delete(void *memory, std::size_t) noexcept
{
    operator delete(memory);
}
