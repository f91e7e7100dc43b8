#pragma once

#include <QByteArray>
#include <QResource>
#include <QStringList>
#include <QtEndian>

// A resource file of the process for as long as the object lives, made in memory in the first version of the toolkit's
// binary resource format: for tests of what stands in a resource that the product has only once. One file in folders of
// its own, like ":/folder/name".
class ResourceBlob {
public:
    ResourceBlob(const QString &path, const QByteArray &content)
    {
        const QStringList parts = path.mid(2).split('/');
        QByteArray names;
        QByteArray tree = node(0, flagFolder, 1);
        for (int i = 0; i < parts.size(); ++i) {
            const auto nameAt = quint32(names.size());
            names += name(parts.at(i));
            const bool isFile = i + 1 == parts.size();
            tree += isFile ? node(nameAt, flagFile, 0) : node(nameAt, flagFolder, quint32(i) + 2);
        }
        const QByteArray data = number<quint32>(quint32(content.size())) + content;
        blob = "qres" + number<quint32>(1) + number<quint32>(headerSize)
            + number<quint32>(quint32(headerSize + tree.size()))
            + number<quint32>(quint32(headerSize + tree.size() + data.size())) + tree + data + names;
        registered = QResource::registerResource(bytes());
    }

    ~ResourceBlob() { QResource::unregisterResource(bytes()); }
    ResourceBlob(const ResourceBlob &) = delete;
    ResourceBlob &operator=(const ResourceBlob &) = delete;

    bool isRegistered() const { return registered; }

private:
    static constexpr int headerSize = 20;
    static constexpr quint16 flagFile = 0;
    static constexpr quint16 flagFolder = 2;

    template <typename T>
    static QByteArray number(T value)
    {
        QByteArray out(int(sizeof value), '\0');
        qToBigEndian(value, out.data());
        return out;
    }

    // A folder tells its number of children and the first of them; a file its language, where 1 is any, and its data.
    static QByteArray node(quint32 nameAt, quint16 flags, quint32 where)
    {
        return number(nameAt) + number(flags) + number<quint32>(1) + number(where);
    }

    static QByteArray name(const QString &text)
    {
        quint32 hash = 0;
        QByteArray characters;
        for (const QChar c : text) {
            hash = (hash << 4) + c.unicode();
            hash ^= (hash & 0xf0000000) >> 23;
            hash &= 0x0fffffff;
            characters += number<quint16>(c.unicode());
        }
        return number<quint16>(quint16(text.size())) + number(hash) + characters;
    }

    const uchar *bytes() const { return reinterpret_cast<const uchar *>(blob.constData()); }

    QByteArray blob;
    bool registered = false;
};
