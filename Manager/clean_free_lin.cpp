// Whatever this program frees is overwritten first, by whichever library it is freed: the toolkit, the display's, the
// card's. What was shown and typed passes through many hands (layouts of text, events, messages to a screen reader),
// and none of them cleans up behind itself. The functions take the place of the C library's own, which these call in
// turn.
#include <algorithm>
#include <cstddef>
#include <cstring>

#include <malloc.h>

extern "C" {

// The C library's own name for it.
void __libc_free(void *block); // NOLINT(bugprone-reserved-identifier)

__attribute__((visibility("default"))) void free(void *block)
{
    if (!block)
        return;
    std::memset(block, 0, malloc_usable_size(block));
    // The compiler must take the bytes for read.
    __asm__ volatile("" : : "r"(block) : "memory");
    __libc_free(block);
}

__attribute__((visibility("default"))) void *realloc(void *block, std::size_t size)
{
    if (!block)
        return malloc(size);
    if (size == 0) {
        free(block);
        return nullptr;
    }
    const std::size_t before = malloc_usable_size(block);
    // Room enough, and not for much more.
    if (size <= before && size >= before / 2)
        return block;
    void *moved = malloc(size);
    if (!moved)
        return nullptr;
    std::memcpy(moved, block, std::min(before, size));
    free(block);
    return moved;
}
}
