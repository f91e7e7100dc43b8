#include "base/crypto_memory.h"

#include <openssl/crypto.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace {

// How long a block is stands before it, in the room that keeps the block as aligned as malloc gives it.
constexpr std::size_t header = alignof(std::max_align_t);
static_assert(header >= sizeof(std::size_t));

std::size_t sizeOf(const void *memory)
{
    std::size_t size = 0;
    std::memcpy(&size, static_cast<const char *>(memory) - header, sizeof size);
    return size;
}

void *allocate(std::size_t size, const char *, int)
{
    auto *block = static_cast<char *>(std::malloc(header + size));
    if (!block)
        return nullptr;
    std::memcpy(block, &size, sizeof size);
    return block + header;
}

void release(void *memory, const char *, int)
{
    if (!memory)
        return;
    OPENSSL_cleanse(memory, sizeOf(memory));
    std::free(static_cast<char *>(memory) - header);
}

// Never in place, where a longer one could be moved and leave the shorter behind.
void *reallocate(void *memory, std::size_t size, const char *file, int line)
{
    if (size == 0 && memory) {
        release(memory, file, line);
        return nullptr;
    }
    void *longer = allocate(size, file, line);
    if (longer && memory) {
        std::memcpy(longer, memory, std::min(size, sizeOf(memory)));
        release(memory, file, line);
    }
    return longer;
}

} // namespace

bool cleanseCryptoMemory()
{
    return CRYPTO_set_mem_functions(allocate, reallocate, release) == 1;
}
