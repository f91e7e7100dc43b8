#pragma once

#include <QString>

// The file through which a certificate is handed to the system's viewer. It stays until the next certificate or the end
// of the program.
namespace TemporaryCertificate {

QString path();
void remove();

} // namespace TemporaryCertificate
