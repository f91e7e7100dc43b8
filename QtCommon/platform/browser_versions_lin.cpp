#include "platform/os_linux.h"

namespace {

// Packages of the browsers, with the label of each in the report.
const struct {
    const char *package;
    const char *label;
} browsers[] = {
    { "firefox", "Firefox" },
    { "firefox-esr", "Firefox ESR" },
    { "chromium", "Chromium" },
    { "google-chrome-stable", "Google Chrome" },
    { "google-chrome-beta", "Google Chrome Beta" },
    { "microsoft-edge-stable", "Microsoft Edge" },
    { "brave-browser", "Brave" },
    { "opera-stable", "Opera" },
    { "vivaldi-stable", "Vivaldi" },
};

} // namespace

QMap<QString, QString> OsLinux::browserVersions()
{
    QMap<QString, QString> versions;
    for (const PackageDatabase::Package &package : packages()) {
        for (const auto &browser : browsers) {
            if (package.name == browser.package)
                versions[browser.label + QString(package.bits == 32 ? " (32-bit)" : "")] = package.version;
        }
    }
    return versions;
}
