#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <array>

// How many certificates each container of the card in the reader holds, and those that were read, as DER. The counts
// come first and are kept apart from the lists.
class CertStore {
public:
    enum Index { Authentication, Authorization, Presence, Qualified };

    void clear();

    void setCounts(int auth, int author, int pres, int qual);
    bool hasContainer(int index) const; // its count is above zero; false for any index outside 0..3
    int qualifiedCount() const;

    // The list at the index then holds this certificate alone. An empty certificate, or an index outside 0..3, changes
    // nothing.
    void setCerts(int index, const QByteArray &cert);
    void setQualifiedCerts(const QList<QByteArray> &certs);
    QList<QByteArray> certs(int index) const; // empty for any index outside 0..3

    // -1 for a name that is no container's.
    static int containerIndex(const QString &name);

private:
    static constexpr int containers = 4;

    std::array<int, containers> counts {};
    std::array<QList<QByteArray>, containers> lists;
};
