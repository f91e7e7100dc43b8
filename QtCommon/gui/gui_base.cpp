#include "gui/gui_base.h"

#include "base/common.h"
#include "base/own_environment.h"
#include "base/settings.h"
#include "gui/box_shadow.h"
#include "gui/scale_factor.h"

#include <QDebug>
#include <QDir>
#include <QGuiApplication>
#include <QMainWindow>
#include <QMargins>
#include <QPainter>
#include <QScreen>
#include <QSettings>
#include <QStyle>
#include <QSvgRenderer>
#include <QSysInfo>

#include <optional>
#include <vector>

namespace {

constexpr char defaultTheme[] = "light";
// Room for the shadow, which falls to the right and downwards; the header reaches the window's upper edge.
const QMargins frameMargins(20, 0, 20, 20);
constexpr QPointF shadowOffset(3, 3);
const Qt::WindowFlags frameFlags =
    Qt::Window | Qt::MSWindowsFixedSizeDialogHint | Qt::FramelessWindowHint | Qt::WindowMinimizeButtonHint;

// The version alone does not tell: a Linux distribution has a "7" as well.
bool isWindows7()
{
    return QSysInfo::kernelType() == "winnt" && QSysInfo::productVersion() == "7";
}

} // namespace

GuiBase::GuiBase() : settings(Settings::instance())
{
    load();
}

GuiBase *GuiBase::instance()
{
    static GuiBase base;
    return &base;
}

void GuiBase::calcScaleFactorEnv(QSize windowSize)
{
    std::vector<std::optional<ScreenShape>> shapes;
    for (const QScreen *screen : QGuiApplication::screens()) {
        if (screen)
            shapes.push_back(ScreenShape { screen->size(), screen->logicalDotsPerInch() });
        else
            shapes.push_back(std::nullopt);
    }
    const std::optional<QString> factors = scaleFactorsText(shapes, windowSize, isWindows7());
    if (!factors)
        return;
    qDebug().noquote() << "Scale factors:  " << *factors;
    OwnEnvironment::set("QT_SCREEN_SCALE_FACTORS", factors->toLatin1());
}

void GuiBase::frameSetup(QMainWindow *window, QWidget *frame, QSize size)
{
    const QSize inner = size.height() < 1 ? window->size() : size;
    const QSize outer = inner.grownBy(frameMargins);
    if (const QScreen *screen = QGuiApplication::primaryScreen())
        window->setGeometry(QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, outer, screen->availableGeometry()));
    else
        window->resize(outer);

    const QWidget *central = window->centralWidget();
    if (central && central->layout())
        window->setContentsMargins(frameMargins);
    else
        frame->setGeometry(QRect(QPoint(frameMargins.left(), frameMargins.top()), inner));
    shadowSet(frame, frameMargins.left());
}

void GuiBase::frameInit(QMainWindow *window, QWidget *frame, QSize size)
{
    frameSetup(window, frame, size);
    window->setWindowFlags(frameFlags);
    window->setAttribute(Qt::WA_TranslucentBackground);
}

QPixmap GuiBase::renderSvg(const QByteArray &svg, QSize size)
{
    const QScreen *screen = QGuiApplication::primaryScreen();
    const qreal ratio = screen ? screen->devicePixelRatio() : 1.0;
    QPixmap pixmap(qRound(size.width() * ratio), qRound(size.height() * ratio));
    if (pixmap.isNull())
        return pixmap;
    pixmap.fill(Qt::transparent);
    QSvgRenderer renderer(svg);
    QPainter painter(&pixmap);
    renderer.render(&painter);
    painter.end();
    pixmap.setDevicePixelRatio(ratio);
    return pixmap;
}

void GuiBase::shadowSet(QWidget *widget, int blur, int cornerRadius)
{
    if (blur <= 0)
        return;
    auto *shadow = new BoxShadow(widget, cornerRadius);
    shadow->setOffset(shadowOffset);
    shadow->setBlurRadius(blur);
    widget->setGraphicsEffect(shadow); // which takes it over
}

void GuiBase::activate(QWidget *widget)
{
    widget->activateWindow();
    widget->raise();
}

void GuiBase::load()
{
    name = defaultTheme;
    QString wanted = settings->value(SettingsKey::theme).toString();
    if (wanted.isEmpty())
        return;
    wanted.replace("highContrast", "hc");
    if (QDir(QString(":/themes/%1/").arg(wanted)).exists())
        name = wanted;
}

QString GuiBase::path(const QString &file) const
{
    return QString(":/themes/%1/%2").arg(name, file);
}

QString GuiBase::picture(const QString &file) const
{
    const QString own = path(file);
    return QFile::exists(own) ? own : ":/images/" + file;
}

QColor GuiBase::colour(const QString &role) const
{
    return QColor(QSettings(path("colours.ini"), QSettings::IniFormat).value(role).toString());
}

QString GuiBase::file(const QString &file) const
{
    return readFileText(path(file));
}
