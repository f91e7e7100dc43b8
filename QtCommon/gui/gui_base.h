#pragma once

#include <QByteArray>
#include <QColor>
#include <QPixmap>
#include <QSize>
#include <QString>

class QMainWindow;
class QWidget;
class Settings;

// Frameless windows, drop shadows, SVG pictures, and the theme that the settings ask for. One object a process, made on
// first use; the static calls need none. Sizes are those of the layout, made for 96 dots per inch.
class GuiBase {
public:
    GuiBase(const GuiBase &) = delete;
    GuiBase &operator=(const GuiBase &) = delete;

    static GuiBase *instance();

    // Sets QT_SCREEN_SCALE_FACTORS so that a window of this size fits on every screen. It works only on applications
    // that are made after it, so it is called on a short-lived one.
    static void calcScaleFactorEnv(QSize windowSize);

    // Centres the window on the primary screen with room for a shadow around `frame`. A size without height stands for
    // the window's present size.
    static void frameSetup(QMainWindow *window, QWidget *frame, QSize size);
    // The same, and the window loses the system's frame and background.
    static void frameInit(QMainWindow *window, QWidget *frame, QSize size);

    // The SVG text as a picture of this size, in the resolution of the primary screen.
    static QPixmap renderSvg(const QByteArray &svg, QSize size);

    // Blur radius and the radius of the widget's own corners, in pixels; nothing happens with a blur below 1.
    static void shadowSet(QWidget *widget, int blur, int cornerRadius = 0);

    static void activate(QWidget *widget);

    // Takes the theme from the settings anew. A theme exists by its folder among the resources, else it is "light".
    void load();
    QString theme() const { return name; }

    // Path of a theme's file among the resources, and its text, which is empty if there is no such file.
    QString path(const QString &file) const;
    QString file(const QString &file) const;
    // Path of a drawing of ":/images/": the theme's own where it has one.
    QString picture(const QString &file) const;
    // For what no style sheet reaches; not valid if the theme has no such colour.
    QColor colour(const QString &role) const;

private:
    GuiBase();

    QString name;
    Settings *settings;
};
