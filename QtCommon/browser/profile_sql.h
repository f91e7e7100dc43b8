#pragma once

#include "browser/profile.h"

// A database of the present kind, whose list of modules is the text file pkcs11.txt.
class ProfileSql : public Profile {
public:
    bool checkIntegrate(bool &connected) override;
    bool disintegrate() override;
    bool moduleRemove() override;
    bool integrate(const QString &name, const QString &params) override;
    QString typeName() override;
    QStringList dbFiles() override;
    ~ProfileSql() override;

private:
    bool usesPreference() const;
    QString modulesFile() const { return directory + "/pkcs11.txt"; }
};
