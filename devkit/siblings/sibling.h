#pragma once

#include <QByteArray>
#include <QString>

// What main of each stand-in begins with.
namespace Sibling {

// Rule for DLLs, temporary folder, identity, log, settings. Before the application object.
void setUp(const QString &displayName, const QByteArray &id);

// What the CAN of all specimen cards is.
inline constexpr char specimenCan[] = "123456";

} // namespace Sibling
