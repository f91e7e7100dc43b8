#include "gui/popup.h"

#include "app/app.h"
#include "base/common.h"
#include "gui/anim_widget.h"
#include "gui/gui_base.h"
#include "gui/gui_scaler.h"
#include "gui/key_focus.h"
#include "ui_popup.h"

#include <QDebug>
#include <QGuiApplication>
#include <QMetaEnum>
#include <QPushButton>
#include <QScreen>
#include <QSettings>
#include <QStyle>

namespace {

constexpr int iconFramesPerSecond = 10;
constexpr int textMinimumWidth = 170;
constexpr char informativeMark[] = "<informative>";

const struct {
    Popup::Icon icon;
    const char *file;
} iconFiles[] = {
    { Popup::NoIcon, "" },
    { Popup::Information, ":/images/popup-info.svg" },
    { Popup::Warning, ":/images/warning.svg" },
    { Popup::Critical, ":/images/warning.svg" },
    { Popup::Question, ":/images/popup-info.svg" },
};

QString iconFile(int icon)
{
    for (const auto &row : iconFiles) {
        if (row.icon == icon)
            return row.file;
    }
    return {};
}

void repolish(QWidget *widget)
{
    widget->style()->unpolish(widget);
    widget->style()->polish(widget);
}

} // namespace

Popup::Popup(QWidget *parentWindow, const QString &title) :
    GuiDialog(parentWindow), ui(new Ui::Popup), app(App::instance()), guiBase(GuiBase::instance())
{
    KeyFocus::watch();
    ui->setupUi(this);
    // Once and before all else: the flags hide a dialog that is shown, and forget which widget has the focus.
    setWindowFlags(Qt::FramelessWindowHint | Qt::NoDropShadowWindowHint);
    setAttribute(Qt::WA_TranslucentBackground);
    setTitle(title);
    setDragWidget(ui->mainFrame);
    // Rich text would keep the press by which the dialog is dragged.
    ui->lMainTitle->setTextInteractionFlags(Qt::NoTextInteraction);
    loadTheme();
    anim = std::make_unique<AnimWidget>(ui->lIcon, QString(), iconFramesPerSecond);
    scaler = std::make_unique<GuiScaler>();
    applyProductSettings();
    ui->bClose->setCursor(Qt::PointingHandCursor);
    // Enter must never mean the cross, which is the first button of the dialog.
    ui->bClose->setAutoDefault(false);
    connectAll();
}

Popup::~Popup()
{
    qDebug().noquote() << "popup destruct";
}

void Popup::loadTheme()
{
    guiBase->load();
    theme = guiBase->theme();
    const QString css = guiBase->file("styles-popup.css");
    if (!css.isEmpty())
        ui->mainFrame->setStyleSheet(css);
}

void Popup::applyProductSettings()
{
    const QSettings ini(":/settings/popup.ini", QSettings::IniFormat);
    if (ini.value("shadowButtons").toBool())
        setProperty("shadowButtons", true);
    if (ini.contains("bCloseSize")) {
        const int side = ini.value("bCloseSize").toInt();
        ui->bClose->setMaximumSize(side, side);
    }
    if (ini.contains("bCloseRightMargin")) {
        QLayout *layout = ui->header->layout();
        QMargins margins = layout->contentsMargins();
        margins.setRight(ini.value("bCloseRightMargin").toInt());
        layout->setContentsMargins(margins);
    }
}

void Popup::connectAll()
{
    connect(ui->bClose, &QPushButton::clicked, this, &Popup::buttonCloseClicked);
    connect(QGuiApplication::clipboard(), &QClipboard::changed, this, &Popup::cleanCopy);
    connect(ui->buttonBox, &QDialogButtonBox::clicked, this, QOverload<QAbstractButton *>::of(&Popup::buttonClicked));
    if (const QScreen *screen = QGuiApplication::primaryScreen())
        connect(screen, &QScreen::logicalDotsPerInchChanged, this, &Popup::guiScale);
    // By name: the window that has this signal is not known down here, and other parents need not have it.
    if (parent && parent->metaObject()->indexOfSignal("closePopups()") >= 0)
        connect(parent, SIGNAL(closePopups()), this, SLOT(closePopup()));
}

int Popup::information(QWidget *parent, const QString &title, const QString &text,
                       QDialogButtonBox::StandardButtons buttons)
{
    return runModal(Information, parent, title, text, QSize(), buttons);
}

int Popup::warning(QWidget *parent, const QString &title, const QString &text,
                   QDialogButtonBox::StandardButtons buttons)
{
    return runModal(Warning, parent, title, text, QSize(), buttons);
}

int Popup::runModal(Icon icon, QWidget *parent, const QString &title, const QString &text, QSize size,
                    QDialogButtonBox::StandardButtons buttons)
{
    Popup popup(parent, QString());
    popup.setTitle(title);
    popup.setIconMessage(icon, text, buttons);
    // A given width cannot grow with the longest line.
    if (size.isEmpty())
        size = popup.contentSize();
    else
        popup.setTextWrap();
    size = popup.roomFor(size);
    popup.ui->lText->setFocus();
    return popup.execAt(size.width(), size.height());
}

void Popup::setTitle(const QString &text)
{
    const QString product = app->productName();
    const QString title = text.isEmpty() ? product : QString(text).replace("{PRODUCT_NAME}", product);
    ui->lMainTitle->setText(title);
    setWindowTitle(Common::plainText(title));
}

void Popup::setIconMessage(int icon, const QString &text, QDialogButtonBox::StandardButtons buttons)
{
    hasIcon = icon != NoIcon;
    anim->setSource(iconFile(icon));
    setMessage(QMetaEnum::fromType<Icon>().valueToKey(icon), text, buttons);
}

void Popup::setMessage(const QString &cssClass, const QString &text, QDialogButtonBox::StandardButtons buttons)
{
    if (customWidget)
        customWidget->hide();
    customWidget = nullptr;

    ui->lText->setProperty("cssClass", cssClass);
    repolish(ui->lText);
    setButtons(buttons, QDialogButtonBox::Yes);

    const int mark = text.indexOf(informativeMark);
    const QString message = text.left(mark);
    const QString informative = mark < 0 ? QString() : text.mid(mark + int(sizeof informativeMark) - 1);
    ui->lInformativeText->setText(informative);
    ui->lInformativeText->adjustSize();
    hasInformative = !informative.isEmpty();

    ui->lText->setText("<p style='line-height:18px'>" + message + "</p>");
    ui->lText->setMinimumWidth(textMinimumWidth);
    ui->lText->adjustSize();
    ui->lText->setAccessibleName(Common::plainText(ui->lText->text()));
    // Which its interaction flags took; a screen reader can come back to the message.
    ui->lText->setFocusPolicy(Qt::TabFocus);
}

void Popup::setButtons(QDialogButtonBox::StandardButtons buttons, int defaultButton)
{
    hasButtons = buttons != QDialogButtonBox::NoButton;
    ui->buttonBox->setStandardButtons(buttons);
    const QList<QPushButton *> all = pushButtons();
    if (all.size() == 1) {
        all.first()->setAutoDefault(true);
        all.first()->setDefault(true);
        all.first()->setCursor(Qt::PointingHandCursor);
        return;
    }
    for (QPushButton *button : all) {
        const bool isDefault = ui->buttonBox->standardButton(button) == defaultButton;
        button->setAutoDefault(isDefault);
        button->setDefault(isDefault);
        button->setProperty("theme", theme);
    }
}

void Popup::setTextWrap()
{
    ui->lText->setWordWrap(true);
}

void Popup::setCustomWidget(QWidget *widget)
{
    customWidget = widget;
    ui->contentLayout->addWidget(widget);
}

int Popup::execAt(int width, int height)
{
    // exec() would come too late for a dialog that is already shown: other windows would stay open to clicks.
    setModal(true);
    show(width, height);
    GuiBase::activate(this);
    exec();
    return result;
}

void Popup::closePopup()
{
    qDebug().noquote() << "Close popup signal received";
    // Without closeClicked(), so that callers can tell the user's close from the program's.
    result = QDialogButtonBox::Ignore;
    close();
}

void Popup::buttonClicked(QAbstractButton *button)
{
    finish(ui->buttonBox->standardButton(button));
}

void Popup::buttonClicked(QDialogButtonBox::StandardButton code)
{
    finish(code);
}

void Popup::buttonCloseClicked()
{
    finish(QDialogButtonBox::Close);
}

void Popup::finish(int code)
{
    result = code;
    if (result == QDialogButtonBox::Close)
        emit closeClicked();
    close();
}

QList<QPushButton *> Popup::pushButtons() const
{
    return ui->buttonBox->findChildren<QPushButton *>();
}
