#pragma once

#include "support/testmain.h"

#include "document_links.h"
#include "gui/key_focus.h"
#include "pin_fields.h"
#include "shared.h"
#include "ui_window.h"

#include <QFontDatabase>
#include <QMainWindow>

#include <cmath>

// As they lie in the sources, so that a new one is asked for all that the others are.
inline const QStringList themes = [] {
    QStringList names = QDir(VELMOR_TEST_SOURCE_DIR "/Shared/themes").entryList({ "*.cmake" });
    names.removeOne("themes.cmake");
    return names.replaceInStrings(".cmake", "");
}();

inline QString styleText(const QString &theme, const QString &name)
{
    QFile file(QString(":/themes/%1/%2").arg(theme, name));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

inline void themeRows()
{
    QTest::addColumn<QString>("theme");
    for (const QString &theme : themes)
        QTest::newRow(qPrintable(theme)) << theme;
}

// Contrast after WCAG 2: relative luminance of sRGB colours.
inline double luminance(const QColor &colour)
{
    const auto channel = [](double c) { return c <= 0.03928 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4); };
    return 0.2126 * channel(colour.redF()) + 0.7152 * channel(colour.greenF()) + 0.0722 * channel(colour.blueF());
}

inline double contrast(const QColor &a, const QColor &b)
{
    const double first = luminance(a) + 0.05;
    const double second = luminance(b) + 0.05;
    return std::max(first, second) / std::min(first, second);
}

inline double wanted(const QString &theme)
{
    return theme == "hc" ? 7.0 : 4.5;
}

inline int difference(QRgb a, QRgb b)
{
    return std::abs(qRed(a) - qRed(b)) + std::abs(qGreen(a) - qGreen(b)) + std::abs(qBlue(a) - qBlue(b));
}

inline QString visibleText(const QWidget *widget)
{
    const QString text = widget->inherits("QComboBox") ? widget->property("currentText").toString()
                                                       : widget->property("text").toString();
    // A text with a colour of its own is not the theme's.
    return text.contains("color:") ? QString() : text;
}

inline QColor foreground(const QWidget *widget)
{
    const auto group = widget->isEnabled() ? QPalette::Active : QPalette::Disabled;
    return widget->palette().color(group, widget->foregroundRole());
}

// The colour that most of a rectangle has: letters cover less than half of any label. A share of the pixels tells.
inline QColor background(const QImage &image, const QRect &rect)
{
    QHash<QRgb, int> count;
    const QRect inside = rect & image.rect();
    const int step = inside.width() > 100 ? 3 : 1;
    for (int y = inside.top(); y <= inside.bottom(); ++y) {
        for (int x = inside.left(); x <= inside.right(); x += step)
            ++count[image.pixel(x, y)];
    }
    return *std::max_element(count.keyBegin(), count.keyEnd(),
                             [&count](QRgb a, QRgb b) { return count[a] < count[b]; });
}

inline void setMouseOver(QWidget *tile, bool on)
{
    if (tile->property("MouseOver").toBool() == on)
        return; // polishing takes long
    QList<QWidget *> widgets = tile->findChildren<QWidget *>();
    widgets.prepend(tile);
    for (QWidget *widget : widgets) {
        widget->setProperty("MouseOver", on);
        widget->style()->unpolish(widget);
        widget->style()->polish(widget);
    }
}

// The window's form in a theme, filled with samples and shown page by page; no program behind it.
class LookWindow {
public:
    LookWindow();

    static void loadFonts();
    void useTheme(const QString &theme);
    // A page by its name, or one of the further states that pages() lists.
    void showPage(const QString &page);
    QStringList pages() const;

    QMainWindow window;
    Ui::Window ui;

private:
    void fillSamples();

    QString blockedText;
};

inline LookWindow::LookWindow()
{
    ui.setupUi(&window);
    blockedText = ui.lPukBlocked->text();
    fillSamples();
    window.show();
}

inline void LookWindow::loadFonts()
{
    QApplication::setAttribute(Qt::AA_Use96Dpi);
    KeyFocus::watch();
    Shared::loadResources();
    for (const QString &name : QDir(":/fonts").entryList())
        QVERIFY(QFontDatabase::addApplicationFont(":/fonts/" + name) >= 0);
}

inline void LookWindow::useTheme(const QString &theme)
{
    const LogCatcher log;
    ui.mainFrame->setStyleSheet(styleText(theme, "styles-window.css"));
    QCoreApplication::processEvents();
    QVERIFY2(!log.has("stylesheet"), qPrintable(log.text())); // a sheet that cannot be parsed is dropped whole
    const QSettings colours(QString(":/themes/%1/colours.ini").arg(theme), QSettings::IniFormat);
    for (QLabel *label : { ui.lPukBlocked, ui.lPukBlocked_2 })
        label->setText(inLinkColour(blockedText, QColor(colours.value("link").toString())));
}

// Long but real values, so that widths are tried.
inline void LookWindow::fillSamples()
{
    ui.lVersion->setText("Wersja aplikacji: <b>4.3.5</b>");
    ui.lMainTitle->setGeometry(30, 15, 421, 31); // above a subtitle
    ui.lSubTitle->setText("Certyfikat do identyfikacji i uwierzytelniania");
    ui.lCommonNameVal->setText("Żaneta Władysława");
    ui.lsurnameVal->setText("Święcicka-Brzęczyszczykiewicz");
    ui.lNumIdVal->setText("ABA123456");
    ui.lExpDateVal->setText("17 października 2033");
    ui.lNumOfQualifiedCerts->setText("12");
    ui.bChangePinAuthorCert->setText("       Odblokuj PIN");
    ui.bChangePinQualifiedCert->setText("       Nadaj PIN");
    for (QLabel *label : ui.pageAllData->findChildren<QLabel *>()) {
        if (label->objectName().contains("Val"))
            label->setText("MIEJSCOWOŚĆ ŻÓŁĆ GĘŚLĄ");
    }
    for (QLabel *hint : { ui.lActualPinInfo, ui.lNewPinInfo, ui.lPinInfoPuk, ui.lNewPinInfoPuk })
        showFieldHint(hint, PinTexts::Colour::Neutral, "Dozwolone znaki 0-9. PIN musi mieć 6 cyfr");
    for (QLabel *hint : { ui.lRepeatPinInfo, ui.lRepeatPinInfoPuk })
        showFieldHint(hint, PinTexts::Colour::Error, "Niepoprawny PIN. Popraw PIN.");
    showFieldHint(ui.lUnblockPinDetails, PinTexts::Colour::Error,
                  "PIN jest zablokowany. Użyj numeru PUK do nadania nowego PIN-u.");
    showFieldHint(ui.lPukInfo, PinTexts::Colour::Neutral,
                  "Masz 3 próby na prawidłowe wpisanie. <b> 3-krotne wpisanie nieprawidłowego PUK-u zablokuje "
                  "dowód.</b><br> Numer PUK znajdziesz w dokumentach, które dostałeś/aś w urzędzie podczas odbierania "
                  "dowodu osobistego.");
    ui.lPinChanged->setText("Kontener został aktywowany.\nNadawanie PIN-u przerwane.\nOdblokuj PIN ponownie.");
    ui.lDisconnect->setText("Brak połączenia \nZdejmij i przyłóż ponownie velmor do czytnika");
    ui.loadingDesc->setText("Odblokowywanie PIN-u \n Proszę czekać");
    ui.layoutChecks->addWidget(new QCheckBox("Przeglądarkach: Chrome, Chromium, Edge"));
}

inline QStringList LookWindow::pages() const
{
    QStringList names { "loading", "home disabled", "home hovered", "pinpad change", "pinpad unblock",
                        "blocked", "take card off", "result done",  "result wrong",  "result neutral" };
    for (int i = 0; i < ui.pager->count(); ++i)
        names << ui.pager->widget(i)->objectName();
    return names;
}

inline void LookWindow::showPage(const QString &page)
{
    ui.loading->setVisible(page == "loading");
    ui.pager->setVisible(page != "loading");
    auto *chosen = window.findChild<QWidget *>(page);
    if (page.startsWith("home") || page == "blocked")
        chosen = ui.pageHome;
    if (page.startsWith("pinpad"))
        chosen = page.endsWith("unblock") ? ui.pageUnblockPin : ui.pageChangePin;
    if (page == "take card off")
        chosen = ui.pageIntegration;
    if (page.startsWith("result")) {
        chosen = ui.pageCorrectChange;
        setResultColour(ui.pinChangedFrame,
                        page.endsWith("done")        ? PinTexts::Colour::Success
                            : page.endsWith("wrong") ? PinTexts::Colour::Error
                                                     : PinTexts::Colour::Neutral);
    }
    ui.lchange_card->setVisible(page == "take card off");
    ui.lIntegration->setText(page == "take card off"
                                 ? "Ustawienia zostały zapisane<br/><br/><br/><br/><br/>Zdejmij i przyłóż ponownie "
                                   "velmor do czytnika"
                                 : "Ustawienia pozostały bez zmian dla aplikacji \"Chrome, Chromium, Edge\".");
    if (page != "loading")
        ui.pager->setCurrentWidget(chosen);
    ui.pagerBlockedPuk->setCurrentWidget(page == "blocked" ? ui.pageBlockedPuk : ui.pageValidPuk);
    ui.pagerPinPadOrApp->setCurrentWidget(page.startsWith("pinpad") ? ui.pagePinPad : ui.pageApp);
    ui.pagerPinOrPinPadPuk->setCurrentWidget(page.startsWith("pinpad") ? ui.pagePinPadUnblock : ui.pageAppUnblock);
    const bool enabled = page != "home disabled";
    for (QWidget *widget : std::initializer_list<QWidget *> {
             ui.authenticationCert, ui.authorizationCert, ui.presenceCert, ui.qualifiedCert, ui.cbReaders,
             ui.bChangePinAuthenCert, ui.bChangePinAuthorCert, ui.bChangePinQualifiedCert, ui.bSettings, ui.bHelp,
             ui.bUpdate, ui.bUpdateArrow, ui.bIntegrate, ui.cbCANStorage })
        widget->setEnabled(enabled);
    for (QWidget *tile : std::initializer_list<QWidget *> { ui.authenticationCert, ui.authorizationCert,
                                                            ui.presenceCert, ui.qualifiedCert, ui.icao })
        setMouseOver(tile, page == "home hovered");
    QCoreApplication::processEvents();
}
