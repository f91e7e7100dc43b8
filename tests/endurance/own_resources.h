#pragma once

#include <QByteArray>
#include <QString>

// What this process holds of the system.
struct OwnResources {
    long heapKiB = 0; // in use, by the allocator's books
    long residentKiB = 0; // of its own, without pages of files
    int descriptors = 0;
    int threads = 0;
    int children = 0;
    int segments = 0; // of shared memory that it has made

    static OwnResources now();
    QString text() const;
};
