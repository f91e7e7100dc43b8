#pragma once

#include <QString>
#include <QStringList>

#include <functional>

class QLayout;
class QWidget;

// The rows of the settings page that Integrator fills: one box an application, whose object name is the application's,
// in the Tab order behind `previous`, which may be null. Without an application a label says so.
void addApplicationChecks(QLayout *layout, const QStringList &apps,
                          const std::function<bool(const QString &app)> &isIntegrated, QWidget *previous);
