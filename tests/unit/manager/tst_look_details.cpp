#include "look_window.h"
#include "ui_popup.h"
#include "ui_thecertitem.h"

#include <QDialog>
#include <QStyleOptionComboBox>

// Single promises of the look: the three states of a tile, and places that are tight by their numbers.
class TestLookDetails : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void tileShowsItsThreeStates();
    void readerBoxHoldsTextAndThirtyPixels_data();
    void readerBoxHoldsTextAndThirtyPixels();
    void hintsDoNotMoveTheFields();
    void certificateCardHoldsALongIssuer();
    void twoButtonsFitTheNarrowestPopup();

private:
    std::unique_ptr<LookWindow> look;
};

void TestLookDetails::initTestCase()
{
    LookWindow::loadFonts();
}

void TestLookDetails::init()
{
    look = std::make_unique<LookWindow>();
    QVERIFY(QTest::qWaitForWindowActive(&look->window));
}

void TestLookDetails::tileShowsItsThreeStates()
{
    look->useTheme("light");
    look->showPage("pageHome");
    const auto colourAt = [this](QPoint point) {
        return look->ui.authenticationCert->grab().toImage().pixelColor(point);
    };
    const QPoint ground(300, 70);
    const QPoint line = look->ui.greyLineAuthenCert->geometry().center();

    QCOMPARE(colourAt(ground), QColor("#ECEDEE"));
    QCOMPARE(colourAt(line), QColor("#98a0a7"));
    QCOMPARE(foreground(look->ui.labelTitleAuthenCert), QColor("#4C5358"));

    setMouseOver(look->ui.authenticationCert, true);
    QCOMPARE(colourAt(ground), QColor("#4C5358"));
    QCOMPARE(colourAt(line), QColor("#2B9EEB"));
    QCOMPARE(foreground(look->ui.labelTitleAuthenCert), QColor(Qt::white));

    setMouseOver(look->ui.authenticationCert, false);
    look->ui.authenticationCert->setEnabled(false);
    QCOMPARE(colourAt(ground), QColor(Qt::white));
    QCOMPARE(colourAt(QPoint(0, 70)), QColor("#D4D6D7"));
    QCOMPARE(colourAt(line), QColor("#D4D6D7"));
    QCOMPARE(foreground(look->ui.labelTitleAuthenCert), QColor("#98A0A7"));

    QCOMPARE(look->ui.icao->grab().toImage().pixelColor(0, 80), QColor("#ECEDEE"));
    setMouseOver(look->ui.icao, true);
    QCOMPARE(look->ui.icao->grab().toImage().pixelColor(0, 80), QColor("#4C5358"));
}

void TestLookDetails::readerBoxHoldsTextAndThirtyPixels_data()
{
    themeRows();
}

void TestLookDetails::readerBoxHoldsTextAndThirtyPixels()
{
    QFETCH(QString, theme);
    look->useTheme(theme);
    const QString name = "OMNIKEY AG CardMan 3121 (żółty)";
    look->ui.cbReaders->clear();
    look->ui.cbReaders->addItem(name);
    const int advance = look->ui.cbReaders->fontMetrics().horizontalAdvance(name);

    look->ui.cbReaders->setFixedWidth(advance + 30);
    QCoreApplication::processEvents();

    for (bool focused : { false, true }) {
        if (focused)
            look->ui.cbReaders->setFocus(Qt::TabFocusReason);
        QStyleOptionComboBox option;
        option.initFrom(look->ui.cbReaders);
        QCOMPARE(option.state.testFlag(QStyle::State_HasFocus), focused);
        const QRect text = look->ui.cbReaders->style()->subControlRect(
            QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, look->ui.cbReaders);
        QVERIFY2(text.width() - 2 >= advance, qPrintable(QString::number(text.width())));
    }
}

void TestLookDetails::hintsDoNotMoveTheFields()
{
    look->useTheme("light");
    look->showPage("pageChangePin");
    const auto places = [this] {
        return QVector<QPoint> { look->ui.lineNewPin->mapTo(look->ui.mainFrame, QPoint()),
                                 look->ui.lineRepeatPin->mapTo(look->ui.mainFrame, QPoint()),
                                 look->ui.bChangePin->mapTo(look->ui.mainFrame, QPoint()) };
    };
    const auto before = places();

    for (QLabel *hint : { look->ui.lActualPinInfo, look->ui.lNewPinInfo, look->ui.lRepeatPinInfo })
        hint->hide();
    QCoreApplication::processEvents();

    QCOMPARE(places(), before);
}

void TestLookDetails::certificateCardHoldsALongIssuer()
{
    look->useTheme("light");
    auto *holder = new QWidget(look->ui.pageCertInfo);
    Ui::TheCertItem card;
    card.setupUi(holder);
    card.lOrganizationName->setText("Certum QCA 2017, Asseco Data Systems Spółka Akcyjna z siedzibą w Gdańsku, "
                                    "Certum Powszechne Centrum Certyfikacji, PL");
    card.lValidFromVal->setText("30 października 2023");
    look->showPage("pageCertInfo");
    holder->show();
    QCoreApplication::processEvents();

    QVERIFY(card.lOrganizationName->heightForWidth(card.lOrganizationName->width())
            <= card.lOrganizationName->height());
    QVERIFY(card.lValidFromVal->sizeHint().width() <= card.lValidFromVal->width());
    QVERIFY(card.bDetailsCert->sizeHint().width() <= card.bDetailsCert->width());
}

void TestLookDetails::twoButtonsFitTheNarrowestPopup()
{
    QDialog dialog;
    Ui::Popup popup;
    popup.setupUi(&dialog);
    popup.mainFrame->setStyleSheet(styleText("light", "styles-popup.css"));
    popup.buttonBox->setStandardButtons(QDialogButtonBox::Yes | QDialogButtonBox::No);
    popup.lInformativeText->hide();
    dialog.show();

    // Message 170, icon 40, margins of 15 twice, and the dialog's own 30.
    popup.mainFrame->setFixedSize(170 + 40 + 30 + 30, 220);
    QCoreApplication::processEvents();

    const auto buttons = popup.buttonBox->findChildren<QPushButton *>();
    QCOMPARE(buttons.size(), 2);
    QVERIFY(!buttons[0]->geometry().intersects(buttons[1]->geometry()));
    for (const QPushButton *button : buttons) {
        const QRect rect(button->mapTo(popup.footer, QPoint()), button->size());
        QVERIFY(popup.footer->rect().contains(rect));
    }
}

VELMOR_TEST(TestLookDetails)
#include "tst_look_details.moc"
