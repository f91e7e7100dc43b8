#pragma once

#include <QByteArray>
#include <QSharedMemory>
#include <QString>
#include <QtTest>

#include <algorithm>
#include <cstring>

// A segment of the bus as another program of the user can have it: any size, any bytes, with or without its lock.
class RawInbox {
public:
    // Creates it, as soon as a program that is about to end has given it back; size 0 attaches to one that is there.
    explicit RawInbox(const char *key, int size = 0) : memory(QString::fromLatin1(key))
    {
        if (size == 0)
            memory.attach();
        else if (!QTest::qWaitFor([&] { return create(size); }, 10000))
            qFatal("%s: %s", key, qPrintable(memory.errorString()));
    }

    bool isThere() const { return memory.isAttached(); }
    int size() const { return memory.size(); }

    void write(const QByteArray &bytes, int at = 0)
    {
        memory.lock();
        std::memcpy(begin() + at, bytes.constData(), static_cast<std::size_t>(std::min(bytes.size(), size() - at)));
        memory.unlock();
    }

    QByteArray bytes()
    {
        memory.lock();
        const QByteArray copy(begin(), size());
        memory.unlock();
        return copy;
    }

    // Up to the first zero.
    QByteArray text()
    {
        const QByteArray all = bytes();
        const int end = all.indexOf('\0');
        return end < 0 ? all : all.left(end);
    }

    bool isFree() { return bytes().at(0) == '\0'; }
    void clear() { write(QByteArray(size(), '\0')); }

    QSharedMemory memory;

private:
    bool create(int size)
    {
        // The last one to leave what a killed process has left behind takes it away.
        return memory.create(size) || (memory.attach() && memory.detach() && memory.create(size));
    }

    char *begin() { return static_cast<char *>(memory.data()); }
};
