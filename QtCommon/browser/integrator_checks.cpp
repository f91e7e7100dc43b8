#include "browser/integrator_checks.h"

#include <QCheckBox>
#include <QLabel>
#include <QLayout>
#include <QVariant>

namespace {

QWidget *noApplicationsLabel()
{
    auto *label = new QLabel("Brak zainstalowanych przeglądarek wymagających integracji");
    label->setWordWrap(true);
    label->setProperty("class", "no_apps_to_integrity");
    // For screen readers, which come to what can have the focus.
    label->setFocusPolicy(Qt::StrongFocus);
    return label;
}

QWidget *applicationCheck(const QString &app, bool checked)
{
    // Some names stand for several browsers.
    auto *check = new QCheckBox((app.contains(',') ? "Przeglądarkach: " : "Przeglądarce ") + app);
    check->setObjectName(app);
    check->setChecked(checked);
    check->setCursor(Qt::PointingHandCursor);
    return check;
}

// Only widgets of one window have a Tab order, so `widget` is in the layout already.
void chain(QWidget *previous, QWidget *widget)
{
    if (previous)
        QWidget::setTabOrder(previous, widget);
}

} // namespace

void addApplicationChecks(QLayout *layout, const QStringList &apps,
                          const std::function<bool(const QString &app)> &isIntegrated, QWidget *previous)
{
    if (apps.isEmpty()) {
        QWidget *label = noApplicationsLabel();
        layout->addWidget(label);
        chain(previous, label);
    }
    for (const QString &app : apps) {
        QWidget *row = applicationCheck(app, isIntegrated(app));
        layout->addWidget(row);
        chain(previous, row);
        previous = row;
    }
}
