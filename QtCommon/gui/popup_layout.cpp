// How a Popup finds its size and grows with the density of the screen. The numbers are those of a layout for 96 dots
// per inch; the frame with everything in it is scaled, the transparent margin around it is not.

#include "gui/popup.h"

#include "gui/anim_widget.h"
#include "gui/breakable_text.h"
#include "gui/gui_base.h"
#include "gui/gui_scaler.h"
#include "ui_popup.h"

#include <QDebug>
#include <QGraphicsDropShadowEffect>
#include <QGuiApplication>
#include <QPushButton>
#include <QScreen>
#include <QStyleOptionButton>

namespace {

constexpr int titleHeight = 42;
constexpr int frameExtra = 30; // what the frame adds to the content in both directions
constexpr int shadowMargin = 20;
// That of the themes.
constexpr int frameRadius = 12;
constexpr int contentMargin = 15;
constexpr int buttonBlur = 10;
constexpr QPointF buttonShadowOffset(1, 1);
// Letters that may stand in a row where the screen is too narrow for the text.
constexpr int unbrokenLetters = 10;

QSize withShadowMargin(QSize frame)
{
    return frame + QSize(2 * shadowMargin, 2 * shadowMargin);
}

int borderOf(const QWidget *frame)
{
    return frame->width() - frame->contentsRect().width();
}

// That its text needs, with the border and the padding of the theme.
QSize roomForText(const QPushButton *button)
{
    QStyleOptionButton option;
    option.initFrom(button);
    const QRect inner = button->style()->subElementRect(QStyle::SE_PushButtonContents, &option, button);
    return button->fontMetrics().size(Qt::TextShowMnemonic, button->text()) + button->size() - inner.size();
}

// What the toolkit makes of a selection on its way to the clipboard.
QString asCopied(QString selection)
{
    return selection.replace(QChar::ParagraphSeparator, '\n')
        .replace(QChar::LineSeparator, '\n')
        .replace(QChar::Nbsp, ' ');
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
    int width = margins.left() + margins.right() + ui->iconSpacer->sizeHint().width();
    if (hasIcon)
        width += ui->lIcon->width() + ui->textAndIconLayout->spacing();
    return width;
}

// The size that keeps everything whole. It is the wanted one unless the text, wrapped to that width, or several buttons
// would be cut, for the wanted one knows nothing of the footer's margins nor of how the fonts turn out.
QSize Popup::roomFor(QSize content)
{
    ui->mainFrame->ensurePolished();
    const int border = borderOf(ui->mainFrame);
    const QMargins inner = ui->contentLayout->contentsMargins();
    int width = content.width() + frameExtra - border;
    int footer = 0;
    if (hasButtons) {
        const QMargins margins = ui->footer->layout()->contentsMargins();
        ui->buttonBox->adjustSize();
        width = qMax(width, ui->buttonBox->width() + margins.left() + margins.right());
        footer = ui->buttonBox->height() + margins.top() + margins.bottom();
    }
    width = qMax(width, ui->header->layout()->minimumSize().width());
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
    growFrame();
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
    scaler->height({ ui->lMainTitle });
    scaler->font(".QLabel", { ui->lMainTitle });
}

void Popup::scaleMessage(int spacing)
{
    scaler->font(".QLabel", { ui->lText });
    scaler->font(".QLabel", { ui->lInformativeText });
    QSpacerItem *spacer = ui->iconSpacer;
    const QSizePolicy policy = spacer->sizePolicy();
    spacer->changeSize(spacing, spacer->sizeHint().height(), policy.horizontalPolicy(), policy.verticalPolicy());
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
        button->setFixedSize(button->size().expandedTo(roomForText(button)));
    }
}

// Text and buttons do not shrink as the frame does: letters have whole pixels, and borders and paddings of the theme
// stay. So the room is asked again, and the frame grows; but not beyond the screen, where the text wraps instead. At
// 96 dots per inch a caller's own size stands.
void Popup::growFrame()
{
    QLayout *layout = ui->mainFrame->layout();
    const int room = screenRoom();
    if (scaler->scale() == 1.0 && ui->mainFrame->width() <= room)
        return;
    for (QLayout *inner : { ui->buttonBox->layout(), ui->footer->layout(), ui->header->layout(), layout })
        inner->activate(); // changed sizes reach an outer layout only by way of the event loop
    if (ui->footer->isVisible())
        ui->footer->setFixedHeight(qMax(ui->footer->height(), ui->footer->layout()->minimumSize().height()));
    const int border = borderOf(ui->mainFrame);
    const auto least = [this, border] { return leastWidth() + border; };
    const int wanted = qMax(ui->mainFrame->width(), least());
    if (wanted > room && !customWidget)
        wrapAtScreen(room - border);
    const int width = qMax(qMin(wanted, room), least());
    ui->mainFrame->setFixedSize(width, qMax(ui->mainFrame->height(), heightFor(width - border) + border));
}

// The layout does not know what the message needs, since a minimum that is set hides it.
int Popup::leastWidth() const
{
    const int least = ui->mainFrame->layout()->minimumSize().width();
    if (customWidget)
        return least;
    const QMargins margins = ui->contentLayout->contentsMargins();
    return qMax(least, margins.left() + widthBesideText() + ui->lText->minimumSizeHint().width() + margins.right());
}

int Popup::heightFor(int width) const
{
    const QLayout *layout = ui->mainFrame->layout();
    const int least =
        layout->hasHeightForWidth() ? layout->minimumHeightForWidth(width) : layout->minimumSize().height();
    if (customWidget)
        return least;
    const QMargins margins = ui->contentLayout->contentsMargins();
    const int line = width - margins.left() - margins.right();
    const QLabel *text = ui->lText;
    int height = ui->header->height() + margins.top() + margins.bottom();
    height += text->wordWrap() ? text->heightForWidth(line - widthBesideText()) : text->sizeHint().height();
    if (hasInformative)
        height += ui->contentLayout->spacing() + ui->lInformativeText->heightForWidth(line);
    if (hasButtons)
        height += ui->footer->height();
    return qMax(least, height);
}

void Popup::wrapAtScreen(int room)
{
    setTextWrap();
    // The text stays as it is unless a single word of it is too wide.
    if (leastWidth() > room)
        ui->lText->setText(breakableText(ui->lText->text(), unbrokenLetters));
}

// What the user copies of the message is without the marks at which its lines may break: a path with them is no file's.
void Popup::cleanCopy(QClipboard::Mode mode)
{
    if (!ui->lText->hasSelectedText())
        return;
    QClipboard *clipboard = QGuiApplication::clipboard();
    const QString copied = clipboard->text(mode);
    const QString clean = withoutBreaks(copied);
    // Another program's copy is none of this dialog's business.
    if (clean != copied && copied == asCopied(ui->lText->selectedText()))
        clipboard->setText(clean, mode);
}

// The width that the screen leaves to the frame.
int Popup::screenRoom() const
{
    const QScreen *screen = QGuiApplication::primaryScreen();
    return screen ? screen->availableSize().width() - 2 * shadowMargin : maximumWidth();
}

// The scaled frame has outgrown the window, or shrunk in it; the window follows and keeps its middle, as far as the
// screen reaches.
void Popup::followFrame()
{
    const QSize outer = withShadowMargin(ui->mainFrame->size());
    QRect place(QPoint(), outer);
    place.moveCenter(geometry().center());
    if (const QScreen *screen = QGuiApplication::primaryScreen()) {
        const QRect available = screen->availableGeometry();
        place.moveLeft(
            qMax(available.left(), qMin(place.left(), available.left() + available.width() - outer.width())));
        place.moveTop(qMax(available.top(), qMin(place.top(), available.top() + available.height() - outer.height())));
    }
    setMinimumSize(outer);
    setGeometry(place);
}
