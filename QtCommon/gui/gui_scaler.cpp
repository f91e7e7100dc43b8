#include "gui/gui_scaler.h"

#include "base/common.h"
#include "gui/gui_base.h"

#include <QDebug>
#include <QFile>
#include <QGuiApplication>
#include <QIcon>
#include <QLabel>
#include <QLayout>
#include <QPushButton>
#include <QRect>
#include <QScreen>
#include <QVariant>
#include <QWidget>

namespace {

constexpr double designDpi = 96.0;

// The value remembered on the widget, or `present`, which is remembered from now on.
template <typename T>
T unscaled(QWidget *widget, const char *property, const T &present)
{
    const QVariant stored = widget->property(property);
    if (stored.isValid())
        return stored.value<T>();
    widget->setProperty(property, QVariant::fromValue(present));
    return present;
}

QSize pictureSize(const QWidget *widget)
{
    if (const auto *label = qobject_cast<const QLabel *>(widget))
        return label->pixmap(Qt::ReturnByValue).size();
    if (const auto *button = qobject_cast<const QPushButton *>(widget))
        return button->iconSize();
    return {};
}

QPixmap renderFile(const QString &path, QSize size)
{
    return GuiBase::renderSvg(readFileText(path).toLatin1(), size);
}

QIcon renderIcon(const QString &path, QSize size)
{
    QIcon icon;
    icon.addPixmap(renderFile(path, size), QIcon::Normal, QIcon::Off);
    const QString hover = QString(path).replace(".svg", "_hover.svg");
    if (QFile::exists(hover))
        icon.addPixmap(renderFile(hover, size), QIcon::Active, QIcon::Off);
    return icon;
}

} // namespace

GuiScaler::GuiScaler(const QString &folder) : themeDir(folder)
{
    if (const QScreen *screen = QGuiApplication::primaryScreen())
        factor = screen->logicalDotsPerInch() / designDpi;
}

void GuiScaler::setDpi(double dpi)
{
    // Single precision, as the siblings compute it: sizes must come out alike.
    if (dpi > 0)
        factor = static_cast<float>(dpi) / static_cast<float>(designDpi);
}

void GuiScaler::setFactor(double value)
{
    if (value > 0)
        factor = value;
}

void GuiScaler::font(const QString &selector, const QList<QWidget *> &widgets) const
{
    for (QWidget *widget : widgets) {
        // Before that, a style sheet's font is not in force yet.
        widget->ensurePolished();
        const int pixels = unscaled(widget, "fontSizeBeforeScaling", widget->font().pixelSize());
        if (pixels < 0) {
            qDebug().noquote() << "scale skipped, " << widget << "has font.pixelSize=-1";
            return; // not just this one: the rest of the list stays as it is
        }
        // Cut, where size, margins and pictures are rounded.
        const QString size = QString::number(static_cast<int>(pixels * factor));
        const QString rule = QString("\n%1{font-size:%2px}").arg(selector, size);
        widget->setStyleSheet(widget->styleSheet() + rule);
    }
}

void GuiScaler::height(const QList<QWidget *> &widgets) const
{
    for (QWidget *widget : widgets)
        widget->setFixedHeight(static_cast<int>(unscaled(widget, "heightBeforeScaling", widget->height()) * factor));
}

void GuiScaler::size(const QList<QWidget *> &widgets) const
{
    for (QWidget *widget : widgets)
        widget->setFixedSize(scaled(unscaled(widget, "sizeBeforeScaling", widget->size())));
}

void GuiScaler::margins(const QList<QWidget *> &widgets) const
{
    for (QWidget *widget : widgets) {
        QLayout *layout = widget->layout();
        if (!layout)
            continue;
        const QMargins present = layout->contentsMargins();
        // A rectangle only to hold four numbers: left, top, right, bottom.
        const QRect base = unscaled(widget, "marginsBeforeScaling",
                                    QRect(present.left(), present.top(), present.right(), present.bottom()));
        layout->setContentsMargins(qRound(base.x() * factor), qRound(base.y() * factor), qRound(base.width() * factor),
                                   qRound(base.height() * factor));
    }
}

void GuiScaler::svg(const QList<QWidget *> &widgets) const
{
    for (QWidget *widget : widgets)
        svgOne(widget);
}

void GuiScaler::svgOne(QWidget *widget, const QString &file) const
{
    const QString path = imagePath(file.isEmpty() ? widget->objectName().mid(1) + ".svg" : file);
    const QSize present = pictureSize(widget);
    if (present.isEmpty()) {
        qDebug().noquote() << "svg scale failed, " << widget->objectName() << "pixmap is empty";
        return;
    }
    const QSize target = scaled(unscaled(widget, "pixmapSize", present));
    if (path.isEmpty())
        return;
    if (auto *label = qobject_cast<QLabel *>(widget)) {
        label->setPixmap(renderFile(path, target));
    } else if (auto *button = qobject_cast<QPushButton *>(widget)) {
        button->setIconSize(target);
        button->setIcon(renderIcon(path, target));
    }
}

QSize GuiScaler::scaled(QSize size) const
{
    return { qRound(size.width() * factor), qRound(size.height() * factor) };
}

QString GuiScaler::imagePath(const QString &file) const
{
    for (const QString &path : { ":/images/" + file, themeDir + file }) {
        if (QFile::exists(path))
            return path;
    }
    return {};
}
