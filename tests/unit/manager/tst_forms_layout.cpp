#include "form_fixture.h"

#include "ui_popup.h"
#include "ui_thecertitem.h"

#include <QDialog>

// What the forms settle beside names: sizes, who lies in whom, what can take the focus.
class TestFormsLayout : public QObject, private FormFixture {
    Q_OBJECT

private slots:
    void initTestCase() { setUpForm(); }
    void partsHaveTheirDesignSizes();
    void footerStaysWhenPagesAndReadersAreHidden();
    void tileIsCoveredByItsBackground_data();
    void tileIsCoveredByItsBackground();
    void pinButtonOutlivesItsDisabledTile_data();
    void pinButtonOutlivesItsDisabledTile();
    void noLayoutOwnsWhatTheProgramMoves_data();
    void noLayoutOwnsWhatTheProgramMoves();
    void textCanTakeTheFocus_data();
    void textCanTakeTheFocus();
    void pinFieldsHideWhatIsTyped();
    void certificateTableOnlyShows();
    void pictureOfTheChangedCardFitsTheGapInItsText();
    void certificateCardHasItsParts();
    void popupIsLaidOutByItsNumbers();
    void firstFocusIsOnThePage();
};

void TestFormsLayout::partsHaveTheirDesignSizes()
{
    QCOMPARE(window->size(), QSize(900, 697));
    QVERIFY(!ui.centralwidget->layout()); // the frame is placed by code, with room for its shadow
    window->show();

    const auto place = [this](QWidget *part) { return QRect(part->mapTo(ui.mainFrame, QPoint()), part->size()); };
    QCOMPARE(ui.mainFrame->size(), QSize(900, 697));
    QCOMPARE(place(ui.header), QRect(0, 0, 900, 80));
    QCOMPARE(place(ui.frameReaders), QRect(0, 80, 900, 48));
    QCOMPARE(place(ui.footer), QRect(0, 640, 900, 57));
    QCOMPARE(place(ui.pager), QRect(0, 128, 900, 512));
    QCOMPARE(place(ui.loading), QRect(0, 93, 900, 547));
    QCOMPARE(ui.lMainTitle->geometry(), QRect(35, 25, 422, 31));
    QCOMPARE(ui.personalData_2->y(), 30);
    for (const QFrame *block : { ui.personalData_2, ui.personalData_3, ui.personalData_4 }) {
        const auto rows = block->findChildren<QFrame *>(QString(), Qt::FindDirectChildrenOnly);
        for (const QFrame *row : rows)
            QCOMPARE(row->maximumHeight(), 30);
        QCOMPARE(block->height(), 30 * rows.size());
    }
}

void TestFormsLayout::footerStaysWhenPagesAndReadersAreHidden()
{
    window->show();

    ui.pager->hide();
    ui.frameReaders->hide();
    QCoreApplication::processEvents();

    QCOMPARE(ui.footer->mapTo(ui.mainFrame, QPoint()).y(), 640);
    QCOMPARE(ui.header->mapTo(ui.mainFrame, QPoint()).y(), 0);
    ui.pager->show();
    QCoreApplication::processEvents();
    QCOMPARE(ui.pager->height(), 560);
    ui.frameReaders->show();
}

void TestFormsLayout::tileIsCoveredByItsBackground_data()
{
    QTest::addColumn<QString>("tile");
    for (const char *tile : { "icao", "authenticationCert", "authorizationCert", "presenceCert", "qualifiedCert" })
        QTest::newRow(tile) << tile;
}

void TestFormsLayout::tileIsCoveredByItsBackground()
{
    QFETCH(QString, tile);

    const auto *frame = find<QWidget>(tile);
    const auto children = frame->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly);

    // The first child is the lowest, so that the texts stand on it.
    QCOMPARE(children.first()->objectName(), tile + "Background");
    QCOMPARE(children.first()->geometry(), frame->rect());
}

void TestFormsLayout::pinButtonOutlivesItsDisabledTile_data()
{
    QTest::addColumn<QString>("tile");
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("arrow");
    QTest::newRow("Authentication") << "authenticationCert"
                                    << "bChangePinAuthenCert"
                                    << "bArrowAuthenCert";
    QTest::newRow("Authorization") << "authorizationCert"
                                   << "bChangePinAuthorCert"
                                   << "bArrowAuthorCert";
    QTest::newRow("Qualified") << "qualifiedCert"
                               << "bChangePinQualifiedCert"
                               << "bArrowQualifiedCert";
}

void TestFormsLayout::pinButtonOutlivesItsDisabledTile()
{
    QFETCH(QString, tile);
    QFETCH(QString, button);
    QFETCH(QString, arrow);

    find<QWidget>(tile)->setEnabled(false);

    QVERIFY(find<QWidget>(button)->isEnabled());
    QVERIFY(!find<QWidget>(arrow)->isEnabled());
    find<QWidget>(tile)->setEnabled(true);
}

void TestFormsLayout::noLayoutOwnsWhatTheProgramMoves_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : { "mainFrame", "loading", "lMainTitle", "lSubTitle", "personalData_2", "personalData_3",
                              "personalData_4", "greyLine_5", "greyLine_6" })
        QTest::newRow(name) << name;
}

void TestFormsLayout::noLayoutOwnsWhatTheProgramMoves()
{
    QFETCH(QString, name);

    QVERIFY(!find<QWidget>(name)->parentWidget()->layout());
}

void TestFormsLayout::textCanTakeTheFocus_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : { "loadingDesc", "lDisconnect", "lPinChanged", "lUnblockPinDetails", "lPukBlocked_2",
                              "lPukBlocked_3", "lPukBlocked_4", "lTryNumDesc_2", "lIntegration", "widgetBlurICAO",
                              "nameFrame_2", "brthDateFrame", "numIdFrame_2", "issuingAuthorityFrame", "lDesc2" })
        QTest::newRow(name) << name;
}

void TestFormsLayout::textCanTakeTheFocus()
{
    QFETCH(QString, name);

    QVERIFY(find<QWidget>(name)->focusPolicy() & Qt::TabFocus);
}

void TestFormsLayout::pinFieldsHideWhatIsTyped()
{
    const auto fields = window->findChildren<QLineEdit *>();

    QCOMPARE(fields.size(), 6);
    for (const QLineEdit *field : fields)
        QCOMPARE(field->echoMode(), QLineEdit::Password);
}

void TestFormsLayout::certificateTableOnlyShows()
{
    const QTableWidget *table = ui.tableCert;

    QCOMPARE(table->editTriggers(), QAbstractItemView::EditTriggers(QAbstractItemView::NoEditTriggers));
    QVERIFY(!table->tabKeyNavigation());
    QCOMPARE(table->selectionMode(), QAbstractItemView::NoSelection);
    QCOMPARE(table->verticalScrollMode(), QAbstractItemView::ScrollPerPixel);
    QCOMPARE(table->horizontalScrollMode(), QAbstractItemView::ScrollPerPixel);
    QVERIFY(!table->showGrid());
    QVERIFY(!table->isCornerButtonEnabled());
}

void TestFormsLayout::pictureOfTheChangedCardFitsTheGapInItsText()
{
    // The text leaves four empty lines between its sentences, and the picture stands in them.
    ui.pager->setCurrentWidget(ui.pageIntegration);
    window->show();
    ui.lIntegration->setText("Ustawienia zostały zapisane<br/><br/><br/><br/><br/>Zdejmij i przyłóż ponownie");
    QCoreApplication::processEvents();

    const auto middle = [this](QWidget *widget) { return widget->mapTo(ui.mainFrame, widget->rect().center()); };
    QVERIFY((middle(ui.lIntegration) - middle(ui.lchange_card)).manhattanLength() <= 2);
    QVERIFY(!ui.lchange_card->pixmap(Qt::ReturnByValue).isNull());
    ui.pager->setCurrentWidget(ui.pageSettings);
}

void TestFormsLayout::certificateCardHasItsParts()
{
    QWidget widget;
    Ui::TheCertItem card;
    card.setupUi(&widget);

    QCOMPARE(card.lOrganizationName->text(), QString("Nazwa wystawcy"));
    QCOMPARE(card.lOrganizationName->textFormat(), Qt::PlainText);
    QCOMPARE(card.lValidFromDesc->text(), QString("Ważny od:"));
    QCOMPARE(card.lValidToDesc->text(), QString("Ważny do:"));
    QCOMPARE(card.bDetailsCert->text(), QString("Zobacz szczegóły"));
    QCOMPARE(card.bDetailsCert->accessibleName(), QString("zobacz szczegóły certyfikatu"));
    QCOMPARE(card.lValidFromVal->parentWidget(), card.ValidFromFrame);
    QCOMPARE(card.lValidToVal->parentWidget(), card.ValidToFrame);
    QCOMPARE(card.ValidFromFrame->parentWidget(), card.detailsCert);
    // Two cards side by side fill the table, with a scroll bar beside them.
    QVERIFY(2 * widget.width() <= 860);
}

void TestFormsLayout::popupIsLaidOutByItsNumbers()
{
    QDialog dialog;
    Ui::Popup popup;
    popup.setupUi(&dialog);

    QCOMPARE(popup.header->minimumHeight(), 60);
    QCOMPARE(popup.header->maximumHeight(), 60);
    QCOMPARE(popup.horizontalLayout_2->contentsMargins().left(), 20);
    QCOMPARE(popup.lMainTitle->textFormat(), Qt::RichText);
    QVERIFY(!popup.lMainTitle->wordWrap());
    QVERIFY(popup.bClose->maximumWidth() <= 40 && popup.bClose->maximumHeight() <= 40);
    QCOMPARE(popup.contentLayout->contentsMargins(), QMargins(15, 15, 15, 15));
    QCOMPARE(popup.contentLayout->spacing(), 0);
    QCOMPARE(popup.textAndIconLayout->contentsMargins().left(), 5);
    QCOMPARE(popup.lIcon->minimumSize(), QSize(40, 40));
    QCOMPARE(popup.lIcon->maximumSize(), QSize(40, 40));
    QCOMPARE(popup.lText->minimumHeight(), 40);
    QCOMPARE(popup.lText->alignment(), Qt::AlignLeft | Qt::AlignVCenter);
    QVERIFY(!popup.lText->wordWrap());
    QCOMPARE(popup.lInformativeText->textFormat(), Qt::RichText);
    QVERIFY(popup.lInformativeText->wordWrap());
    QCOMPARE(popup.horizontalLayout->contentsMargins(), QMargins(30, 5, 30, 15));
    QCOMPARE(popup.horizontalLayout->spacing(), 30);
    QVERIFY(popup.buttonBox->centerButtons());
    QCOMPARE(dialog.windowTitle(), QString("velmor"));
    QCOMPARE(dialog.property("theme").toString(), QString("dark"));
    QCOMPARE(popup.lMainTitle->text(), QString("Brevant"));
    QCOMPARE(popup.lText->text(), QString("Jeden Dwa Trzy"));
    QCOMPARE(popup.lInformativeText->text(), QString("TempInformativeText"));
}

void TestFormsLayout::firstFocusIsOnThePage()
{
    // Not on a button of the header, where it would look like an invitation to close the program.
    QMainWindow fresh;
    Ui::Window form;
    form.setupUi(&fresh);
    fresh.show();

    for (QWidget *next = fresh.nextInFocusChain(); next != &fresh; next = next->nextInFocusChain()) {
        if (!(next->focusPolicy() & Qt::TabFocus) || !next->isVisible())
            continue;
        QVERIFY2(form.pageSettings->isAncestorOf(next), qPrintable(next->objectName()));
        break;
    }
}

VELMOR_TEST(TestFormsLayout)
#include "tst_forms_layout.moc"
