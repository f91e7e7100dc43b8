#pragma once

#include <QSettings>
#include <QString>
#include <QVariant>

#include <memory>

// The keys of the store. Missing keys read as an invalid QVariant, that is as false, 0 or an empty text.
//
// key                        type     who writes it
// GUID                       text     Settings, once for an installation; protects the remembered CAN
// e-code:                    bytes    the options of the settings page; removed here when a new GUID is made
// language                   text     no program of today; read without effect
// theme                      text     no program of today; a theme's folder or "highContrast"
// updateAvailable            text     a sibling program; "true" or other
// updateInProgress           text     a sibling program; "true" or other
// hideCheckboxCANRemember    bool     the options of the settings page
// useCSPforRSA               bool     the options of the settings page
namespace SettingsKey {
constexpr char guid[] = "GUID";
constexpr char rememberedCan[] = "e-code:";
constexpr char language[] = "language";
constexpr char theme[] = "theme";
constexpr char updateAvailable[] = "updateAvailable";
constexpr char updateInProgress[] = "updateInProgress";
constexpr char hideCheckboxCanRemember[] = "hideCheckboxCANRemember";
constexpr char useCspForRsa[] = "useCSPforRSA";
} // namespace SettingsKey

// Named values shared with the sibling programs: the user's store first, the machine's second. Writes go to the user's
// store only, so a value that the user saved shadows the machine's for good. No failure is reported: a store that
// cannot be read counts as empty. Works without an application object.
class Settings {
public:
    Settings();
    virtual ~Settings();

    static Settings *instance();

    QVariant value(const QString &key) const;
    void setValue(const QString &key, const QVariant &value);

    // Reads again what other processes wrote.
    void sync();

private:
    std::unique_ptr<QSettings> store;
};
