#pragma once

#include <QList>
#include <QSize>
#include <QString>

class QWidget;

// Rescales widgets that were laid out for 96 dots per inch. The unscaled values are remembered on the widgets
// themselves, as dynamic properties, at the first scaling; so scaling again starts from them and never accumulates.
class GuiScaler {
public:
    // Folder in which pictures are looked for after ":/images/", with its separator at the end; may be empty. Starts
    // with the density of the primary screen.
    explicit GuiScaler(const QString &themeDir = {});

    // Values that are not above 0 change nothing.
    void setDpi(double dpi);
    void setFactor(double value);
    double scale() const { return factor; }

    // Font sizes, as one more rule at the end of each widget's own style sheet. A widget whose font has no pixel size
    // ends the run: the widgets behind it stay as they are.
    void font(const QString &selector, const QList<QWidget *> &widgets) const;
    void height(const QList<QWidget *> &widgets) const;
    void size(const QList<QWidget *> &widgets) const;
    // Contents margins of the widgets' layouts.
    void margins(const QList<QWidget *> &widgets) const;

    // Draws the pictures of labels and buttons anew from their SVG files. No file name means the widget's object name
    // without its first letter, so `bClose` shows Close.svg. A button also takes the picture beside it that ends in
    // "_hover". The files must be plain ASCII.
    void svg(const QList<QWidget *> &widgets) const;
    void svgOne(QWidget *widget, const QString &file = {}) const;

private:
    QSize scaled(QSize size) const;
    QString imagePath(const QString &file) const;

    double factor = 1.0;
    QString themeDir;
};
