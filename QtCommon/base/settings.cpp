#include "base/settings.h"

#include "base/common.h"
#include "base/crypto.h"

#include <QDebug>

namespace {

std::unique_ptr<QSettings> openStore(QSettings::Scope scope)
{
    auto store = std::make_unique<QSettings>(QSettings::NativeFormat, scope, "velmor", "config");
    // Else the user's store would read the machine's by itself, and both the files of other programs.
    store->setFallbacksEnabled(false);
    return store;
}

} // namespace

Settings::Settings() : store(openStore(QSettings::UserScope))
{
    if (!value(SettingsKey::guid).isValid()) {
        // A CAN that was stored under an older GUID can no longer be decrypted.
        store->remove(SettingsKey::rememberedCan);
        setValue(SettingsKey::guid, QString::fromLatin1(Crypto::generateSeed()));
    }
    if (!value(SettingsKey::guid).isValid())
        setValue(SettingsKey::guid, QString::fromLatin1(Crypto::generateSeed()));
    if (Common::isDev())
        qDebug().noquote() << "new GUID:" << value(SettingsKey::guid).toString();
}

Settings::~Settings() = default;

Settings *Settings::instance()
{
    static std::unique_ptr<Settings> settings = std::make_unique<Settings>();
    return settings.get();
}

QVariant Settings::value(const QString &key) const
{
    QVariant own = store->value(key);
    if (own.isValid())
        return own;
    return openStore(QSettings::SystemScope)->value(key);
}

void Settings::setValue(const QString &key, const QVariant &value)
{
    store->setValue(key, value);
}

void Settings::sync()
{
    store->sync();
}
