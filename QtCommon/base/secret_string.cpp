#include "base/secret_string.h"

#include <openssl/crypto.h>

void wipeSecret(QString &text)
{
    // False also for what has no memory of its own: a literal, an empty text.
    if (text.isDetached())
        OPENSSL_cleanse(text.data(), static_cast<std::size_t>(text.size()) * sizeof(QChar));
    text.clear();
}

QString copyOfSecret(const QString &text)
{
    return QString(text.constData(), text.size());
}
