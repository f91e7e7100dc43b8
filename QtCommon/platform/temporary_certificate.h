#pragma once

#include <QString>

// The file through which a certificate is handed to the system's viewer. It stays until the next certificate, until the
// card goes, or until the program ends.
namespace TemporaryCertificate {

QString path();
void removeFile();

} // namespace TemporaryCertificate
