#pragma once

#include <QByteArray>
#include <QFile>
#include <QStringList>
#include <QtEndian>

// A program or DLL for Windows as its file tells: for which machine it is, and which DLLs it imports. Only what is
// needed of the published PE/COFF format, for the 64-bit kind.
class PeFile {
public:
    static constexpr quint16 machineX64 = 0x8664;
    static constexpr quint16 machineX86 = 0x014c;

    explicit PeFile(const QString &path)
    {
        QFile file(path);
        if (file.open(QIODevice::ReadOnly))
            bytes = file.readAll();
    }

    quint16 machine() const { return number<quint16>(header() + 4); }

    // Names as they are written in the file.
    QStringList imports() const
    {
        constexpr quint32 directoriesAt = 24 + 112;
        constexpr quint32 entrySize = 20;
        constexpr quint32 nameAt = 12;
        QStringList names;
        quint32 entry = offsetOf(number<quint32>(header() + directoriesAt + 8));
        for (; entry && number<quint32>(entry + nameAt); entry += entrySize)
            names << QString::fromLatin1(bytes.constData() + offsetOf(number<quint32>(entry + nameAt)));
        return names;
    }

    // The same file made out to be one for 32-bit programs.
    QByteArray asX86() const
    {
        constexpr quint16 magicOf32Bits = 0x10b;
        QByteArray changed = bytes;
        qToLittleEndian<quint16>(machineX86, changed.data() + header() + 4);
        qToLittleEndian<quint16>(magicOf32Bits, changed.data() + header() + 24);
        return changed;
    }

private:
    template <typename T>
    T number(quint32 at) const
    {
        return at + sizeof(T) <= quint32(bytes.size()) ? qFromLittleEndian<T>(bytes.constData() + at) : T(0);
    }
    quint32 header() const { return number<quint32>(0x3c); }

    // Where in the file an address of the loaded image lies; 0 if nowhere.
    quint32 offsetOf(quint32 address) const
    {
        constexpr quint32 sectionSize = 40;
        const quint32 first = header() + 24 + number<quint16>(header() + 20);
        for (quint32 i = 0; i < number<quint16>(header() + 6); ++i) {
            const quint32 section = first + i * sectionSize;
            const quint32 start = number<quint32>(section + 12);
            const quint32 size = number<quint32>(section + 16);
            if (address >= start && address < start + size)
                return address - start + number<quint32>(section + 20);
        }
        return 0;
    }

    QByteArray bytes;
};
