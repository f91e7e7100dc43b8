#pragma once

#include "base/ipc_msg.h"
#include "card_in_reader.h"
#include "certificate_watch.h"
#include "header_drag.h"
#include "pin_fields.h"
#include "pin_texts.h"
#include "reader_list.h"
#include "stuck_guard.h"

#include <QByteArrayList>
#include <QMainWindow>
#include <QStringList>
#include <QThread>

#include <optional>

class AnimWidget;
class App;
class GuiBase;
class GuiScaler;
class HoverParameter;
class Integrator;
class Ipc;
class Pkcs11;
class QLabel;
class QSslCertificate;
class QUrl;
class QVBoxLayout;
class QWidget;
class Settings;
class ThProxy;
struct OsInfo;

namespace Ui {
class Window;
}

// The one window of the program and the owner of everything that lives as long as the program does. It shows what the
// card worker answers and never waits for it: a request is a signal to ThProxy, the answer a slot whose name ends in
// Fin or begins with loaded. While a request runs the loader hides the pages, which is the guard against a second one.
// One source file a flow: window.cpp construction and small helpers, window_shell.cpp header, loader and quitting,
// window_readers.cpp reader lists, window_card_read.cpp the reading of a card, window_home.cpp the home page, and so
// on. What is known of the card is a value of its own, and so are the two forms in which PINs are typed.
class Window : public QMainWindow {
    Q_OBJECT

public:
    explicit Window(QWidget *parent = nullptr);
    ~Window() override;

    // Shows the certificate in the system's own window, and the loader until that has come.
    void openCertWin(const QSslCertificate &cert);

    // For the container in hand.
    void moveToPinPage();
    void moveToUnblockPinPage();
    void moveToBlockedPukPage();

private slots:
    void setPinButtonsEnabled(bool status);
    void disableEnableChangePin();
    void disableEnableUnblockPin();
    bool isReader() const;
    void setError(const QString &err);
    void updateReaderWidth();
    void openHelpWebsite();
    void openCertWinFin();
    void openCertWinShowLoader();
    int showReaderWarningPopup();
    void onDiagnosticsRaportAnchorClicked(const QUrl &link);

public slots:
    void integrateApps2();
    void changePinFin(int res);
    void closeTheards();
    void closeWithTheards();
    void loadedReaders(const QStringList &_readers, const QString &err = {}, const QString &canAppStat = {});
    void loaderReadersErr(const QString &err, const QString &canAppStat);
    void loadAll();
    void quitClicked();
    void disableHomePage();
    void chooseAuthenticationCertPIN();
    void chooseAuthenticationCertInfo();
    void chooseAuthorizationCertPIN();
    void chooseAuthorizationCertInfo();
    void choosePresenceCertInfo();
    void chooseQualifiedCertPIN();
    void chooseQualifiedCertInfo();
    void unblockPinPad();
    void unblockPin();
    void moveToCertInfoPage();
    void checkAndMoveToHomePage();
    void moveToHomePage();
    void moveToSettingsPage(bool standalone);
    void moveToAllDataPage();
    void moveToHelpPage();
    void selectReader();
    void getSystemInfo();
    void copyRaport();
    void waitToUnblockPin();
    void changePin();
    void unblockPinFin(int res);
    void recvIpcMsg(const IpcMsg &m);
    void refreshCertsStatus(const QString &authen, const QString &author, const QString &quali, int tl_authen,
                            int tl_athor, int tl_pres, int tl_qual);
    void loadedCertsCount(int auth, int author, int pres, int qual);
    void loadedConteinersAndICAO(const QString &authen, const QString &author, const QString &quali, int tl_authen,
                                 int tl_athor, int tl_pres, int tl_qual, bool _pinPad, int _typeOfChip,
                                 const QByteArray &dg1, const QByteArray &dg11, const QByteArray &dg12,
                                 const QByteArray &dg13);
    void loadedPhoto(const QByteArray &dg2);
    void loadedCerts(const QByteArray &authen, const QByteArray &presence, const QByteArray &author,
                     const QByteArrayList &qual);
    void loadedReaderSelected(bool res);
    void getReadersFromMonitor();
    void showWndw();
    void integrateApps();
    void reloadSettingPage();
    void setOtherOptions();
    void integrationEnds();
    void minimizeClicked();
    void checkForUpdate();
    void updateApp();
    void getReadersFin(bool success, const QStringList &readers);

signals:
    void getReaders(int requireFlag, int nonRequiredFlag);
    void getCertsCount(const QString &reader);
    void getConteinersAndICAO(const QString &reader);
    void getPhoto(const QString &reader);
    void selectDriverReader(const QString &reader);
    void getCerts(const QString &reader, bool getAuthen, bool getPres, bool getAuthor, bool getQual);
    void changePinSig(const QString &reader, const QString &conteiner, const QString &oldPin, const QString &newPin);
    void unblockPinSig(const QString &reader, const QString &conteiner, const QString &PUK, const QString &newPIN);
    void loadSsl();
    void openCert(const QByteArray &cert);
    void integrateSig(QVBoxLayout *w);
    void closePopups();

protected:
    bool event(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    // window.cpp
    void createGuiHelpers();
    void drawInTheme();
    void hideOptionalWidgets();
    void setFixedTexts();
    void startIpc();
    void connectHeaderAndFooter();
    void fillPinForms();
    void connectPinPages();
    void connectSettingsAndHelp();
    void startWorker();
    void connectWorkerRequests();
    void connectWorkerAnswers();
    void runMonitor();
    void setPageTitle(const QString &title, const QString &subtitle = {});
    void setLabelElided(QLabel *label, const QString &text);
    bool isPage(const QWidget *page) const;
    // The settings and the help are not disturbed by what happens to the card.
    bool needsNoCard() const;
    bool isPinPage() const;
    void turnTo(QWidget *page);
    // For the pages on which no other reader can be chosen.
    void enterPage(QWidget *page, const QString &title, const QString &subtitle = {});

    // window_shell.cpp
    void loaderShow(const QString &title, const QString &unused = {}, bool unusedFlag = false,
                    bool keepReaders = false);
    void loaderHide();
    void tryCloseTheards();

    // window_readers.cpp
    void moveToDisconnectPage(const QString &message, bool hideReaders);
    void setHomeParams();
    void checkReaderWarning(const QString &readerName);
    void enableReadersOnlyWithChoice();

    // window_card_read.cpp
    bool cardHasGone() const;
    void showNoElectricLayer();
    void fillNamesFromCertificate(const QByteArray &der);
    void clearPerson();

    // window_home.cpp
    void connectHomePage();
    void choosePin(const QString &name);
    void chooseCertificates(const QString &name);
    void showPinWords();
    void updatePukTriesLabels();
    void updateHomeCards();
    void describeQualifiedTile();
    void showPhotoIn(QLabel *label);

    // window_personal_data.cpp
    void showPersonalData();

    // window_certificates.cpp
    void fillCertificates(const QString &name);

    // window_messages.cpp
    void ipcWindowFocus();
    void ipcReaders(const IpcMsg &m);
    ReaderPage readerPage() const;
    void askMonitorForReaders();

    // window_settings.cpp
    void forgetResult();

    // window_help.cpp
    void ipcDiagnoseReaders(const IpcMsg &m);

    // window_pin_change.cpp
    enum PinPage { ChangePage = 2, UnblockPage = 3 };
    PinForm::Rule pinRule() const;
    void forgetPinEntries();
    void leavePinPageForPuk();
    void showPinPage();
    void changePinOnPad();
    void preparePinFields();
    void chooseKeyboardOrPad();
    void clearPinFields();
    bool validateTwoPins(int page, const QString &pin, const QString &repeat);
    bool pinMayBeTriedAgain();
    void updateTriesLabels();
    void showResultPage(const QString &text, PinTexts::Colour colour, int titleKey);

    // window_pin_unblock.cpp
    const PinTexts::PukPageWords &pukPageWords() const;
    void setPukPageWords();
    void describePukPage();

    CardInReader card;
    App *app;
    GuiBase *guiBase;
    GuiScaler *scaler = nullptr;
    OsInfo *osInfo = nullptr;
    Integrator *integrator = nullptr;
    Ipc *ipc = nullptr;
    Pkcs11 *pkcs11 = nullptr;
    ThProxy *thProxy = nullptr;
    Ui::Window *ui;
    HoverParameter *hover = nullptr;
    int closeAttempts = 0;
    int pinStatus = 0; // tries of the container in hand
    HeaderDrag drag;
    bool busyFlag = false; // from loaderShow to loaderHide, and while what was typed is checked
    int integrationAppsCount = 0;
    int diagnosisLength = 0; // of what the Monitor has told of the readers since the report was built
    Settings *settings;
    PinForm changeForm {};
    PinForm unblockForm {};
    AnimWidget *loader = nullptr;
    AnimWidget *photoLoader = nullptr;
    QString reader; // in use; empty between list updates
    QString conteiner; // chosen on the home page
    QThread workerThread;
    StuckGuard stuckGuard;
    bool newReaders = false; // a change waits for the return to the home page
    bool readersRequested = false; // the next list reads the card
    CertificateWatch certWatch;
    // From the user's order to change the browsers until its result is shown: what came meanwhile from the family.
    std::optional<QList<IpcMsg>> heldMessages;
};
