// How a Popup finds its size and grows with the density of the screen. The numbers are those of a layout for 96 dots
// per inch; the frame with everything in it is scaled, the transparent margin around it is not.

#include "gui/popup.h"

#include "gui/anim_widget.h"
#include "gui/gui_base.h"
#include "gui/gui_scaler.h"
#include "ui_popup.h"

#include <QDebug>
#include <QGraphicsDropShadowEffect>
#include <QGuiApplication>
#include <QPushButton>
#include <QScreen>

namespace {

constexpr int titleHeight = 42;
constexpr int frameExtra = 30; // what the frame adds to the content in both directions
constexpr int shadowMargin = 20;
// That of the themes.
constexpr int frameRadius = 12;
constexpr int contentMargin = 15;
constexpr int buttonBlur = 10;
constexpr QPointF buttonShadowOffset(1, 1);

QSize withShadowMargin(QSize frame)
{
    return frame + QSize(2 * shadowMargin, 2 * shadowMargin);
}

QSpacerItem *firstSpacer(const QLayout *layout)
{
    for (int i = 0; i < layout->count(); ++i) {
        if (QSpacerItem *spacer = layout->itemAt(i)->spacerItem())
            return spacer;
    }
    return nullptr;
}

} // namespace

QSize Popup::contentSize()
{
    const QMargins margins = ui->contentLayout->contentsMargins();
    QSize size = ui->lText->size();
    if (hasIcon) {
        size.rwidth() += ui->textAndIconLayout->spacing() + ui->lIcon->width();
        size.setHeight(qMax(size.height(), ui->lIcon->height()));
    }
    if (hasInformative) {
        size.rheight() += ui->lInformativeText->height() + ui->contentLayout->spacing();
        size.setWidth(qMax(size.width(), ui->lInformativeText->width()));
    }
    size.rwidth() += margins.left() + margins.right();
    if (hasButtons) {
        ui->buttonBox->adjustSize();
        size.setWidth(qMax(size.width(), ui->buttonBox->width()));
        size.rheight() += ui->buttonBox->height() + margins.top() + margins.bottom();
    }
    return size;
}

int Popup::widthBesideText() const
{
    const QMargins margins = ui->textAndIconLayout->contentsMargins();
    const QSpacerItem *spacer = firstSpacer(ui->textAndIconLayout);
    int width = margins.left() + margins.right() + (spacer ? spacer->sizeHint().width() : 0);
    if (hasIcon)
        width += ui->lIcon->width() + ui->textAndIconLayout->spacing();
    return width;
}

// The size that keeps everything whole. It is the wanted one unless the text, wrapped to that width, or several buttons
// would be cut, for the wanted one knows nothing of the footer's margins nor of how the fonts turn out.
QSize Popup::roomFor(QSize content)
{
    ui->mainFrame->ensurePolished();
    const int border = ui->mainFrame->width() - ui->mainFrame->contentsRect().width();
    const QMargins inner = ui->contentLayout->contentsMargins();
    int width = content.width() + frameExtra - border;
    int footer = 0;
    if (hasButtons) {
        const QMargins margins = ui->footer->layout()->contentsMargins();
        ui->buttonBox->adjustSize();
        width = qMax(width, ui->buttonBox->width() + margins.left() + margins.right());
        footer = ui->buttonBox->height() + margins.top() + margins.bottom();
    }
    int height = content.height() + frameExtra - border;
    if (ui->lText->wordWrap()) {
        const int line = width - inner.left() - inner.right();
        int text = ui->lText->heightForWidth(line - widthBesideText());
        if (hasInformative)
            text += ui->contentLayout->spacing() + ui->lInformativeText->heightForWidth(line);
        height = qMax(height, text + inner.top() + inner.bottom() + footer);
    }
    return { width + border - frameExtra, height + border - frameExtra };
}

void Popup::show(int width, int height)
{
    // Of a dialog that is shown again nothing of its last end.
    result = 0;
    setVisibleParts();
    if (!customWidget && property("shadowButtons").toBool())
        setButtonShadows();
    ui->lMainTitle->setFixedHeight(titleHeight);
    placeFrame(width, height);
    GuiBase::shadowSet(ui->mainFrame, shadowMargin, frameRadius);
    QDialog::show();
    GuiBase::activate(this);
    ui->bClose->clearFocus();
    if (const QScreen *screen = QGuiApplication::primaryScreen())
        guiScale(screen->logicalDotsPerInch());
}

void Popup::setVisibleParts()
{
    const bool ownMessage = !customWidget;
    ui->footer->setVisible(ownMessage && hasButtons);
    ui->lText->setVisible(ownMessage);
    ui->lInformativeText->setVisible(ownMessage && hasInformative);
    ui->lIcon->setVisible(ownMessage && hasIcon);
}

void Popup::setButtonShadows()
{
    for (QPushButton *button : pushButtons()) {
        auto *shadow = new QGraphicsDropShadowEffect;
        shadow->setBlurRadius(buttonBlur);
        shadow->setOffset(buttonShadowOffset);
        button->setGraphicsEffect(shadow);
    }
}

void Popup::placeFrame(int width, int height)
{
    const QVariant unscaledHeader = ui->header->property("heightBeforeScaling");
    const int header = unscaledHeader.isValid() ? unscaledHeader.toInt() : ui->header->height();
    const QSize frame(width + frameExtra, height + header + frameExtra);
    qDebug().noquote() << "show size:" << frame.width() << frame.height();
    ui->mainFrame->setFixedSize(frame);
    ui->mainFrame->setProperty("sizeBeforeScaling", frame);

    const QSize outer = withShadowMargin(frame);
    setMinimumSize(outer);
    layout()->setContentsMargins(shadowMargin, shadowMargin, shadowMargin, shadowMargin);
    resizeAndCenter(outer.width(), outer.height());
    if (size() != outer)
        qDebug().noquote() << "Resize window failed:" << size() << ", expected:" << outer
                           << ", content size:" << QSize(width, height);
}

void Popup::guiScale(qreal dpi)
{
    if (!isVisible())
        return;
    scaler->setDpi(dpi);
    qDebug().noquote() << "scale" << scaler->scale();
    scaleFrame();
    const int margin = static_cast<int>(contentMargin * scaler->scale());
    ui->contentLayout->setContentsMargins(margin, margin, margin, margin);
    if (customWidget)
        scaler->size({ customWidget });
    else
        scaleMessage(margin);
    followFrame();
    emit logicalDotsPerInchChanged(dpi);
}

void Popup::scaleFrame()
{
    scaler->size({ ui->mainFrame });
    scaler->height({ ui->header });
    if (ui->footer->isVisible())
        scaler->height({ ui->footer });
    scaler->margins({ ui->header, ui->footer });
    scaler->size({ ui->bClose });
    scaler->font(".QLabel", { ui->lMainTitle });
}

void Popup::scaleMessage(int spacing)
{
    scaler->font(".QLabel", { ui->lText });
    scaler->font(".QLabel", { ui->lInformativeText });
    if (QSpacerItem *spacer = firstSpacer(ui->textAndIconLayout)) {
        const QSizePolicy policy = spacer->sizePolicy();
        spacer->changeSize(spacing, spacer->sizeHint().height(), policy.horizontalPolicy(), policy.verticalPolicy());
        ui->textAndIconLayout->invalidate();
    }
    if (hasIcon) {
        scaler->size({ ui->lIcon, anim.get() });
        anim->setSize(ui->lIcon->size());
    }
    for (QPushButton *button : pushButtons()) {
        if (!button->isVisible())
            continue;
        scaler->font(".QPushButton", { button });
        // Last: with a style sheet of its own a button falls back to the smallest size that the theme gives it.
        scaler->size({ button });
    }
}

// The scaled frame has outgrown the window, or shrunk in it; the window follows and keeps its middle.
void Popup::followFrame()
{
    const QSize outer = withShadowMargin(ui->mainFrame->size());
    QRect place(QPoint(), outer);
    place.moveCenter(geometry().center());
    setMinimumSize(outer);
    setGeometry(place);
}
