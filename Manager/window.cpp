#include "window.h"

// Construction in its fixed order, the connections of all widgets and of the worker, and the small helpers that every
// page uses. The window starts the worker thread and, if it does not run yet, the Monitor.

#include "app/app.h"
#include "app/app_lock.h"
#include "base/common.h"
#include "base/settings.h"
#include "browser/integrator.h"
#include "card/pkcs11.h"
#include "card_table_access.h"
#include "carried_answers.h"
#include "document_links.h"
#include "gui/anim_widget.h"
#include "gui/gui_base.h"
#include "gui/gui_scaler.h"
#include "gui/hover_parameter.h"
#include "gui/kept_icon.h"
#include "gui/key_focus.h"
#include "gui/link_focus.h"
#include "gui/secret_text.h"
#include "gui/spoken_focus.h"
#include "ipc/ipc.h"
#include "platform/open_outside.h"
#include "platform/os_info.h"
#include "platform/temporary_certificate.h"
#include "reader_box.h"
#include "spoken_page.h"
#include "text_width.h"
#include "thproxy.h"
#include "tile_shadow.h"
#include "ui_window.h"

#include <QApplication>
#include <QDebug>
#include <QFile>
#include <QIcon>
#include <QSslSocket>
#include <QTimer>
#include <QUrl>

namespace {

constexpr int loaderFramesPerSecond = 10;
constexpr QRect titleAlone(35, 25, 422, 31);
constexpr QRect titleAboveSubtitle(30, 15, 421, 31);

// For a field whose own accessible name is kept empty: a label beside it, which nobody sees, is the name of the stop.
void nameByLabel(QLineEdit *field, const QString &name)
{
    auto *label = new QLabel(name, field->parentWidget());
    label->setBuddy(field);
    label->hide();
}

void warnWithoutSsl()
{
    if (QSslSocket::supportsSsl())
        return;
    QString text = "SSL not supported";
    if (Common::isDev())
        text += " - Copy ssleay32.dll and libeay32.dll from SDK\\openssl-1.1.1k into " + qEnvironmentVariable("QTDIR")
            + "\\bin";
    qDebug().noquote() << text;
}

} // namespace

Window::Window(QWidget *parent) :
    QMainWindow(parent), app(App::instance()), guiBase(GuiBase::instance()), ui(new Ui::Window),
    settings(Settings::instance())
{
    showCardsToScreenReaders();
    showPagesToScreenReaders();
    tellSecretsAsBullets();
    KeyFocus::watch();
    setWindowIcon(QIcon(":/icons/Manager.iconset/Manager.ico"));
    ui->setupUi(this);
    createGuiHelpers();
    osInfo = new OsInfo;
    GuiBase::frameInit(this, ui->mainFrame, QSize(0, 0));
    integrator = new Integrator(app, osInfo);
    addWindowShadows(*ui);
    hideOptionalWidgets();
    hover = new HoverParameter;
    hover->setParent(this);
    setFixedTexts();
    fillPinForms();
    // Its first look finds what has come since the lock was taken, and that leads to any page.
    startIpc();
    connectHeaderAndFooter();
    connectHomePage();
    connectPinPages();
    connectSettingsAndHelp();
    pkcs11 = new Pkcs11;
    ui->lError->setText({});
    ui->lError->show();
    // Without effect, since the box is not editable and has no such item; the item of the form stays.
    ui->cbReaders->setCurrentText("brak podłączonego czytnika");
    ui->tDiagnosticsRaport->document()->setDefaultStyleSheet("a { color:#2c9eeb; font-weight:bold; }");
    startWorker();
    // Looking for the TLS library takes long, and the window can be seen before.
    QTimer::singleShot(0, this, &warnWithoutSsl);
    if (isPage(ui->pageSettings))
        reloadSettingPage();
    else
        moveToDisconnectPage("Podłącz poprawnie czytnik", true);
    runMonitor();
    ui->bUpdateArrow->hide();
    ui->bUpdate->hide();
    checkForUpdate();
    checkReaderWarning(reader);
}

Window::~Window()
{
    // The boxes alone: browsers are changed by the user's button, never by the end of the program.
    Integrator::checksClear(ui->layoutChecks);
    TemporaryCertificate::removeFile();
    closeTheards();
    // The library's own end, in the deletion of pkcs11, can get stuck as well.
    stuckGuard.arm();
    delete ui;
    delete photoLoader;
    delete loader;
    // After its thread has ended, and the card only after its worker.
    delete thProxy;
    delete pkcs11;
    delete ipc;
    delete integrator;
    delete osInfo;
    delete scaler;
}

void Window::createGuiHelpers()
{
    loader = new AnimWidget(ui->loadingGif, guiBase->path("loader.svg"), loaderFramesPerSecond);
    photoLoader = new AnimWidget(ui->lPhoto, guiBase->path("loader_photo.svg"), loaderFramesPerSecond);
    scaler = new GuiScaler;
    scaler->setFactor(1.0);
    scaler->svg({ ui->lfooter, ui->lostrel, ui->lno_connection, ui->lpinpad, ui->lchange_card });
    scaler->svgOne(ui->lPinPadImg_2, "pinpad.svg");
    drawInTheme();
}

// In the colours of the theme, where it is not the one for which the pictures are drawn.
void Window::drawInTheme()
{
    const struct {
        QLabel *label;
        const char *file;
    } drawings[] = {
        { ui->lfooter, "footer.svg" },
        { ui->lostrel, "ostrel.svg" },
        { ui->lno_connection, "no_connection.svg" },
        { ui->lpinpad, "pinpad.svg" },
        { ui->lchange_card, "change_card.svg" },
        { ui->lPinPadImg_2, "pinpad.svg" },
    };
    for (const auto &row : drawings) {
        const QString own = guiBase->path(row.file);
        if (QFile::exists(own))
            scaler->svgOne(row.label, own);
    }
    for (QLabel *photo : { ui->lPhoto, ui->lPhotoLarge })
        photo->setPixmap(keptIcon(guiBase->picture("no_photo.svg")).pixmap(photo->size()));
}

void Window::hideOptionalWidgets()
{
    for (QWidget *widget :
         std::initializer_list<QWidget *> { ui->bWroc, ui->lNewPinInfo, ui->lPinInfoPuk, ui->lNewPinInfoPuk,
                                            ui->lActualPinInfo, ui->lRepeatPinInfo, ui->bArrowICAO })
        widget->hide();
}

void Window::setFixedTexts()
{
    ui->lVersion->setText(QString("Wersja aplikacji: <b>%1</b>").arg(QCoreApplication::applicationVersion()));
    // The one title with a blank behind it, which is meant.
    setPageTitle("velmor Menedżer ");
    ui->lGuide->setText(documentLink(app->manualPath(), "Instrukcja"));
    // Two blanks, which is meant.
    ui->lLicense->setText(documentLink(app->licensePath(), "Umowa  Licencyjna"));
    ui->lChangelog->setText(documentLink(app->changelogPath(), "Historia Zmian"));
    for (QLabel *label : { ui->lPukBlocked, ui->lPukBlocked_2 })
        label->setText(inLinkColour(label->text(), guiBase->colour("link")));
    ui->lineRepeatPin->setAccessibleName({});
    nameByLabel(ui->lineRepeatPin, ui->lRepeatPin->text());
    ui->cbCSPChoose->setAccessibleDescription(ui->lCSPChoose->text());
    ui->bRaport->setAccessibleDescription(ui->lPukBlocked_5->text());
    ui->tDiagnosticsRaport->setAccessibleDescription(ui->lPukBlocked_9->text());
    auto *focus = new LinkFocus(this);
    for (QLabel *link : { ui->lGuide, ui->lLicense, ui->lChangelog })
        focus->watch(link);
    auto *speech = new LinkSpeech(this);
    for (QWidget *text :
         std::initializer_list<QWidget *> { ui->tDiagnosticsRaport, ui->lPukBlocked, ui->lPukBlocked_2 })
        speech->watch(text);
    for (const QLabel *label : ui->mainFrame->findChildren<QLabel *>())
        connect(label, &QLabel::linkActivated, this, [](const QString &address) { openOutside(QUrl(address)); });
}

// The segment of the instance lock is the inbox.
void Window::startIpc()
{
    ipc = new Ipc;
    ipc->useLock(*app);
    connect(ipc, &Ipc::received, this, &Window::recvIpcMsg);
    ipc->start();
}

void Window::connectHeaderAndFooter()
{
    connect(ui->bClose, &QAbstractButton::clicked, this, &Window::quitClicked);
    connect(ui->bMinimalize, &QAbstractButton::clicked, this, &Window::minimizeClicked);
    connect(ui->bWroc, &QAbstractButton::clicked, this, &Window::checkAndMoveToHomePage);
    prepareReaderBox(ui->cbReaders);
    connect(ui->cbReaders, QOverload<int>::of(&QComboBox::activated), this, &Window::selectReader);
    connect(ui->bSettings, &QAbstractButton::clicked, this, &Window::moveToSettingsPage);
    connect(ui->bHelp, &QAbstractButton::clicked, this, &Window::moveToHelpPage);
    connect(ui->bUpdateArrow, &QAbstractButton::clicked, this, &Window::updateApp);
    connect(ui->bUpdate, &QAbstractButton::clicked, this, &Window::updateApp);
    connect(ui->bReaderWarning, &QAbstractButton::clicked, this, &Window::showReaderWarningPopup);
    connect(ui->bWarningIcon, &QAbstractButton::clicked, this, &Window::showReaderWarningPopup);
}

void Window::fillPinForms()
{
    changeForm = { ui->lineActualPin, ui->lActualPinInfo, ui->lineNewPin, ui->lNewPinInfo,
                   ui->lineRepeatPin, ui->lRepeatPinInfo, ui->bChangePin };
    unblockForm = { ui->lineInsertPuk,    ui->lPinInfoPuk,       ui->lineNewPinPuk, ui->lNewPinInfoPuk,
                    ui->lineRepeatPinPuk, ui->lRepeatPinInfoPuk, ui->bChangePinPuk };
}

void Window::connectPinPages()
{
    for (QPushButton *button : { ui->bWrocPin, ui->bWrocPuk, ui->bCancel, ui->bCancel_2 })
        connect(button, &QAbstractButton::clicked, this, &Window::moveToHomePage);
    connect(changeForm.send, &QAbstractButton::clicked, this, &Window::changePin);
    connect(unblockForm.send, &QAbstractButton::clicked, this, &Window::unblockPin);
    for (QLineEdit *field : { changeForm.secret, changeForm.fresh, changeForm.repeat })
        connect(field, &QLineEdit::textEdited, this, &Window::disableEnableChangePin);
    for (QLineEdit *field : { unblockForm.secret, unblockForm.fresh, unblockForm.repeat })
        connect(field, &QLineEdit::textEdited, this, &Window::disableEnableUnblockPin);
    for (const PinForm *form : { &changeForm, &unblockForm }) {
        for (QLineEdit *field : { form->secret, form->fresh, form->repeat })
            prepareSecret(field);
    }
    connect(qApp, &QApplication::focusChanged, this, markFocusInRings);
}

void Window::connectSettingsAndHelp()
{
    connect(ui->bIntegrationFinnish, &QAbstractButton::clicked, this, &Window::moveToSettingsPage);
    connect(ui->bIntegrate, &QAbstractButton::clicked, this, &Window::integrateApps);
    connect(ui->bCANSettings, &QAbstractButton::clicked, this, &Window::setOtherOptions);
    connect(ui->bRaport, &QAbstractButton::clicked, this, &Window::openHelpWebsite);
    connect(ui->bDiagnosticStart, &QAbstractButton::clicked, this, &Window::getSystemInfo);
    connect(ui->bCopyRaport, &QAbstractButton::clicked, this, &Window::copyRaport);
    connect(ui->tDiagnosticsRaport, &QTextBrowser::anchorClicked, this, &Window::onDiagnosticsRaportAnchorClicked);
}

void Window::startWorker()
{
    thProxy = new ThProxy(pkcs11);
    thProxy->moveToThread(&workerThread);
    connectWorkerRequests();
    connectWorkerAnswers();
    workerThread.start(QThread::InheritPriority);
}

void Window::connectWorkerRequests()
{
    connect(this, &Window::getReaders, thProxy, &ThProxy::readers);
    connect(this, &Window::getCertsCount, thProxy, &ThProxy::certsCount);
    connect(this, &Window::getConteinersAndICAO, thProxy, &ThProxy::getConteinersAndICAO);
    connect(this, &Window::getPhoto, thProxy, &ThProxy::getPhoto);
    connect(this, &Window::selectDriverReader, thProxy, &ThProxy::selectReader);
    connect(this, &Window::getCerts, thProxy, &ThProxy::getCerts);
    connect(this, &Window::changePinSig, thProxy, &ThProxy::changePin);
    connect(this, &Window::unblockPinSig, thProxy, &ThProxy::unblockPin);
    connect(this, &Window::loadSsl, thProxy, &ThProxy::loadSsl);
}

void Window::connectWorkerAnswers()
{
    connect(thProxy, &ThProxy::readersFin, this, &Window::getReadersFin);
    connect(thProxy, &ThProxy::certsCountFin, this, &Window::loadedCertsCount);
    connect(thProxy, &ThProxy::getConteinersAndICAOFin, this, &Window::loadedConteinersAndICAO);
    connect(thProxy, &ThProxy::getPhotoFin, this, &Window::loadedPhoto);
    connect(thProxy, &ThProxy::selectReaderFin, this, &Window::loadedReaderSelected);
    connect(thProxy, &ThProxy::getCertsFin, this, &Window::loadedCerts);
    connect(thProxy, &ThProxy::refreshCertsFin, this, &Window::refreshCertsStatus);
    connect(thProxy, &ThProxy::changePinFin, this, &Window::changePinFin);
    connect(thProxy, &ThProxy::unblockPinFin, this, &Window::unblockPinFin);
    wipeCarriedAnswers(thProxy, this);
}

void Window::runMonitor()
{
    if (Common::isAppRunning("Monitor", "velmor"))
        qDebug().noquote() << "Monitor is running";
    else
        app->runMonitor();
}

void Window::setError(const QString &err)
{
    ui->lError->setText(err);
}

bool Window::isPage(const QWidget *page) const
{
    return ui->pager->currentWidget() == page;
}

bool Window::needsNoCard() const
{
    return isPage(ui->pageSettings) || isPage(ui->pageHelp);
}

bool Window::isPinPage() const
{
    return isPage(ui->pageChangePin) || isPage(ui->pageUnblockPin);
}

void Window::enterPage(QWidget *page, const QString &title, const QString &subtitle)
{
    leaveFocus(this);
    ui->cbReaders->setEnabled(false);
    turnTo(page);
    setPageTitle(title, subtitle);
}

// Who turns to a page says what has the focus there.
void Window::turnTo(QWidget *page)
{
    leaveFocus(this);
    const FocusPause pause;
    ui->pager->setCurrentWidget(page);
}

void Window::setPageTitle(const QString &title, const QString &subtitle)
{
    ui->lMainTitle->setText(title);
    ui->lSubTitle->setText(subtitle);
    ui->lMainTitle->setGeometry(subtitle.isEmpty() ? titleAlone : titleAboveSubtitle);
}

void Window::setLabelElided(QLabel *label, const QString &text)
{
    // A page that was never shown has no fonts of the theme yet.
    label->ensurePolished();
    const QString shown = elidedToWidth(text, QFontMetrics(label->font()).horizontalAdvance(text), label->width());
    label->setText(shown);
    label->setToolTip(shown == text ? QString() : plainToolTip(text));
}
