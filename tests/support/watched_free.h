#pragma once

#include <QByteArray>
#include <QString>

#include <atomic>
#include <cstring>

// Blocks of texts and bytes that are looked into in the moment in which they are freed: are they overwritten by then?
// Included by one source of a program, which then has a free() of its own. The sanitizers have theirs instead.

#ifdef __SANITIZE_ADDRESS__
#define VELMOR_FREE_IS_WATCHED 0
#else
#define VELMOR_FREE_IS_WATCHED 1
#endif

extern "C" void __libc_free(void *block); // NOLINT(bugprone-reserved-identifier)

class WatchedFree {
public:
    // Watches what these hold, and holds it no longer itself.
    static void watch(QString text) { add(text.data_ptr(), int(sizeof(QChar)) * text.size()); }
    static void watch(QByteArray bytes) { add(bytes.data_ptr(), bytes.size()); }
    static void forgetAll() { count = 0; }

    static int watched() { return count; }
    static int freed() { return countOf(&Block::freed); }
    static int overwritten() { return countOf(&Block::overwritten); }

    static void lookInto(const void *block)
    {
        for (int i = 0; i < count; ++i) {
            Block &each = blocks[i];
            if (each.place != block || each.freed)
                continue;
            const auto *content = static_cast<const char *>(block) + each.offset;
            each.overwritten = content[0] == 0 && std::memcmp(content, content + 1, std::size_t(each.size - 1)) == 0;
            each.freed = true;
        }
    }

private:
    struct Block {
        const void *place;
        std::ptrdiff_t offset;
        int size;
        std::atomic<bool> freed;
        std::atomic<bool> overwritten;
    };

    static void add(const QArrayData *data, int size)
    {
        if (size == 0 || count == most)
            qFatal("nothing to watch, or too much");
        Block &block = blocks[count];
        block.place = data;
        block.offset = data->offset;
        block.size = size;
        block.freed = false;
        block.overwritten = false;
        ++count;
    }
    static int countOf(std::atomic<bool> Block::*state)
    {
        int found = 0;
        for (int i = 0; i < count; ++i)
            found += (blocks[i].*state) ? 1 : 0;
        return found;
    }

    static constexpr int most = 16;
    static inline Block blocks[most];
    static inline std::atomic<int> count { 0 };
};

#if VELMOR_FREE_IS_WATCHED
extern "C" __attribute__((visibility("default"))) void free(void *block)
{
    if (block)
        WatchedFree::lookInto(block);
    __libc_free(block);
}
#endif
