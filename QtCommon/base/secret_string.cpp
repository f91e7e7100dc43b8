#include "base/secret_string.h"

#include <openssl/crypto.h>

namespace {

// To ask whether one is the last, and to let go afterwards, would leave the bytes behind where two do so at once.
template <class Holder>
void letGoWiped(Holder &holder)
{
    auto *data = holder.data_ptr();
    using Data = std::remove_pointer_t<decltype(data)>;
    holder.data_ptr() = Holder().data_ptr();
    if (data->ref.deref())
        return;
    // What is not its own has no room.
    if (data->alloc > 0)
        OPENSSL_cleanse(data->data(), data->alloc * sizeof(*data->data()));
    Data::deallocate(data);
}

} // namespace

void wipeSecret(QString &text)
{
    letGoWiped(text);
}

void wipeSecret(QByteArray &bytes)
{
    letGoWiped(bytes);
}

void overwriteSecret(const QString &text)
{
    auto *data = const_cast<QString &>(text).data_ptr();
    if (data->alloc > 0)
        OPENSSL_cleanse(data->data(), data->alloc * sizeof(*data->data()));
}

QString joinSecrets(std::initializer_list<QStringView> parts)
{
    qsizetype length = 0;
    for (const QStringView part : parts)
        length += part.size();
    QString joined;
    joined.reserve(static_cast<int>(length));
    for (const QStringView part : parts)
        joined.append(part.data(), static_cast<int>(part.size()));
    return joined;
}
