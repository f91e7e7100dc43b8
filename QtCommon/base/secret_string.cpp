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

QString copyOfSecret(const QString &text)
{
    return QString(text.constData(), text.size());
}
