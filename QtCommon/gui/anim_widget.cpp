#include "gui/anim_widget.h"

#include <QLabel>
#include <QMovie>
#include <QSvgRenderer>
#include <QTimer>

namespace {

// The renderer's own timer, by which it asks for the next frame; there is none before the first moving SVG. Blocked
// signals alone would leave it waking the program up for nothing.
QTimer *frameTimer(const QSvgRenderer *renderer)
{
    return renderer->findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly);
}

} // namespace

AnimWidget::AnimWidget(QLabel *target, const QString &file, int framesPerSecond) :
    source(file), label(target), svgWidget(new AnimSvgWidget(target))
{
    if (framesPerSecond > 0)
        svgWidget->renderer()->setFramesPerSecond(framesPerSecond);
    setSource(file);
}

AnimWidget::~AnimWidget()
{
    delete svgWidget;
}

void AnimWidget::setSource(const QString &file)
{
    if (file.isEmpty() || !label || !svgWidget)
        return;
    if (file.endsWith(".gif"))
        loadGif(file);
    else
        loadSvg(file);
}

void AnimWidget::loadGif(const QString &file)
{
    freezeSvg();
    svgWidget->hide(); // it would cover the film
    isGif = true;
    auto next = std::make_unique<QMovie>(file);
    label->setMovie(next.get());
    movie = std::move(next);
    movie->start();
}

void AnimWidget::loadSvg(const QString &file)
{
    if (isGif) {
        movie->stop();
        svgWidget->show();
    }
    isGif = false;
    label->setPixmap(QPixmap()); // the label repaints, and with it what lies on it: the new first frame
    // Loading starts the renderer's timer and asks for a repaint; both wait for `start`.
    svgWidget->renderer()->blockSignals(true);
    svgWidget->load(file);
    freezeSvg();
    svgWidget->setFixedSize(label->size());
}

void AnimWidget::setSize(QSize picture)
{
    size = picture;
    if (isGif)
        movie->setScaledSize(size);
    else if (svgWidget)
        svgWidget->setFixedSize(size);
}

void AnimWidget::start()
{
    if (isGif) {
        movie->start();
    } else if (svgWidget) {
        svgWidget->show();
        runSvg();
    }
}

void AnimWidget::stop()
{
    if (isGif) {
        movie->stop();
    } else if (svgWidget) {
        freezeSvg();
        svgWidget->hide();
    }
}

void AnimWidget::runSvg()
{
    QSvgRenderer *renderer = svgWidget->renderer();
    renderer->blockSignals(false);
    QTimer *timer = frameTimer(renderer);
    if (timer && renderer->animated())
        timer->start();
}

void AnimWidget::freezeSvg()
{
    if (QTimer *timer = frameTimer(svgWidget->renderer()))
        timer->stop();
}
