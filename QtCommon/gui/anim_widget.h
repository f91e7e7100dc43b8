#pragma once

#include <QPointer>
#include <QSize>
#include <QString>
#include <QSvgWidget>
#include <QWidget>

#include <memory>

class QLabel;
class QMovie;

// Only a name of its own, by which style sheets can tell it from other SVG widgets.
class AnimSvgWidget : public QSvgWidget {
    Q_OBJECT

public:
    using QSvgWidget::QSvgWidget;
};

// Plays a picture on a label, from an SVG file or, if its name ends in ".gif", from a GIF. An SVG stands still after it
// was loaded until `start`; a GIF moves at once. The player itself is never shown.
class AnimWidget : public QWidget {
    Q_OBJECT

public:
    // The label is not owned and may go first. Frames per second hold for SVG only; 0 leaves the toolkit's own pace.
    AnimWidget(QLabel *label, const QString &source, int framesPerSecond);
    ~AnimWidget() override;

    // Loads another file; an empty name does nothing.
    void setSource(const QString &file);
    void setSize(QSize picture);
    void start();
    void stop();

private:
    void loadGif(const QString &file);
    void loadSvg(const QString &file);
    void runSvg();
    void freezeSvg();

    bool isGif = false;
    QString source;
    QPointer<QLabel> label;
    QSize size { 0, 0 };
    QPointer<AnimSvgWidget> svgWidget; // owned, and the label's child, so it can go with the label
    std::unique_ptr<QMovie> movie;
};
