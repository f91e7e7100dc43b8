#include "base/common.h"

#include "base/platform.h"

#include <QDebug>
#include <QFile>

QString readFileText(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QByteArray content = file.readAll();
    // With its size, or the text would end at a zero byte.
    return QString::fromUtf8(content.constData(), content.size());
}

bool writeFileBytes(const QString &path, const QByteArray &bytes)
{
    // By name and before the open, so the old content is gone even if the open then fails. It is meant.
    QFile::resize(path, 0);
    QFile file(path);
    // A buffer would be one more copy of a certificate, which nobody overwrites.
    if (!file.open(QIODevice::ReadWrite | QIODevice::Unbuffered))
        return false;
    file.write(bytes);
    return true;
}

void createEmptyFile(const QString &path)
{
    QFile file(path);
    file.open(QIODevice::WriteOnly);
}

namespace Common {

namespace {

QString readersConf()
{
    return Platform::readersConfPath(productName());
}

} // namespace

bool isWritable(const QString &path)
{
    // Appending is the one way of opening for writing that leaves the content alone.
    QFile file(path);
    return file.open(QIODevice::Append);
}

QString readReadersConf()
{
    return readFileText(readersConf());
}

bool clearReadersConf()
{
    QFile file(readersConf());
    if (!file.exists())
        return true;
    return file.open(QIODevice::ReadWrite) && file.resize(0);
}

QString maxApduSize(const QString &reader)
{
    for (const QString &line : readReadersConf().split("\r\n")) {
        const QString key = sliceText(line, "$=^");
        if (key.isEmpty() || !reader.contains(key))
            continue;
        QString value = sliceText(line, "$=$");
        qDebug().noquote() << "reader maxApdu is" << value;
        return value;
    }
    return "200";
}

} // namespace Common
