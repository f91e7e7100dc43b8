#include "form_fixture.h"

#include <QRegularExpression>

// The forms promise names, classes and places to the code that fills them.
class TestForms : public QObject, private FormFixture {
    Q_OBJECT

private slots:
    void initTestCase() { setUpForm(); }
    void widgetHasItsNameClassAndPlace_data();
    void widgetHasItsNameClassAndPlace();
    void namesAreUniqueInTheWindow();
    void pagesStandInTheirOrder_data();
    void pagesStandInTheirOrder();
    void windowOpensOnTheSettingsPage();
    void classIsKnownBeforeTheWords_data();
    void classIsKnownBeforeTheWords();
};

void TestForms::widgetHasItsNameClassAndPlace_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("inside");
    QTest::addColumn<QStringList>("names");

    struct Row {
        const char *kind;
        const char *inside;
        const char *names;
    };
    static const Row rows[] = {
        { "QFrame", "centralwidget", "mainFrame" },
        { "QPushButton", "header", "bWroc bClose bMinimalize" },
        { "QLabel", "header", "lMainTitle lSubTitle" },
        { "QWidget", "mainFrame", "loading header footer frameReaders" },
        { "QLabel", "loading", "loadingDesc loadingGif" },
        { "QLabel", "footer", "lostrel lVersion lDot lfooter" },
        { "QPushButton", "footer", "bSettings bHelp bUpdate bUpdateArrow" },
        { "QLabel", "frameReaders", "lError lReaderDesc" },
        { "QComboBox", "frameReaders", "cbReaders" },
        { "QWidget", "frameReaders", "warningFrame" },
        { "QPushButton", "warningFrame", "bWarningIcon bReaderWarning" },
        { "QStackedWidget", "mainFrame", "pager" },
        { "QStackedWidget", "pageHome", "pagerBlockedPuk" },
        { "QWidget", "pageValidPuk",
          "widgetBlurICAO widgetBlurAuthen widgetBlurAuthor widgetBlurQualified presenceCert" },
        { "QWidget", "widgetBlurICAO", "icao" },
        { "QWidget", "widgetBlurAuthen", "authenticationCert" },
        { "QWidget", "widgetBlurAuthor", "authorizationCert" },
        { "QWidget", "widgetBlurQualified", "qualifiedCert" },
        { "QLabel", "icao", "lPhoto lCommonNameVal lsurnameVal lNumIdVal lExpDateVal" },
        { "QPushButton", "icao", "bArrowICAO" },
        { "QLabel", "authenticationCert", "labelTitleAuthenCert lTextAuthenCert" },
        { "QPushButton", "authenticationCert", "bArrowAuthenCert" },
        { "QLabel", "authorizationCert", "labelTitleAuthorCert lTextAuthorCert" },
        { "QPushButton", "authorizationCert", "bArrowAuthorCert" },
        { "QLabel", "presenceCert", "labelTitlePresenceCert lTextPresenceCert" },
        { "QPushButton", "presenceCert", "bArrowPresenceCert" },
        { "QLabel", "qualifiedCert", "labelTitleQualifiedCert lTextQualifiedCert lNumOfQualifiedCerts" },
        { "QPushButton", "qualifiedCert", "bArrowQualifiedCert" },
        { "QPushButton", "widgetBlurAuthen", "bChangePinAuthenCert" },
        { "QPushButton", "widgetBlurAuthor", "bChangePinAuthorCert" },
        { "QPushButton", "widgetBlurQualified", "bChangePinQualifiedCert" },
        { "QWidget", "pageAllData",
          "widgetLargePhoto personalData_2 personalData_3 personalData_4 greyLine_5 greyLine_6" },
        { "QLabel", "widgetLargePhoto", "lPhotoLarge" },
        { "QFrame", "personalData_2", "nameFrame_2 surnameFrame_2 familyNameFrame fatherNameFrame motherNameFrame" },
        { "QLabel", "personalData_2", "lnameVal_2 lsurnameVal_2 lfamilyNameVal lfatherNameVal lmotherNameVal" },
        { "QFrame", "personalData_3", "brthDateFrame birthPlaceFrame sexFrame peselFrame nationalityFrame" },
        { "QLabel", "personalData_3", "lbrthDateVal lbirthPlaceVal lsexVal lpeselVal lnationalityVal" },
        { "QFrame", "personalData_4", "numIdFrame_2 expDateFrame_2 issueDateFrame issuingAuthorityFrame" },
        { "QLabel", "personalData_4", "lnumIdVal_2 lexpDateVal_2 lissueDateVal lissuingAuthVal" },
        { "QTableWidget", "pageCertInfo", "tableCert" },
        { "QStackedWidget", "pageChangePin", "pagerPinPadOrApp" },
        { "QLabel", "pageApp",
          "lActualPin lActualPinInfo lNewPin lNewPinInfo lRepeatPin lRepeatPinInfo lTryNumDesc lSTryNum" },
        { "QLineEdit", "pageApp", "lineActualPin lineNewPin lineRepeatPin" },
        { "QPushButton", "pageApp", "bCancel bChangePin" },
        { "QWidget", "pageApp", "fTryNum" },
        { "QLabel", "pagePinPad", "lpinpad lTryNumDesc_2 lCancelDesc lTryNumDescpinpad lSTryNumpinpad lInfoPinPad" },
        { "QWidget", "pagePinPad", "fTryNumpinpad" },
        { "QLabel", "pageUnblockPin", "lUnblockPinDetails" },
        { "QStackedWidget", "pageUnblockPin", "pagerPinOrPinPadPuk" },
        { "QLabel", "pageAppUnblock",
          "lPuk lPukInfo lPinInfoPuk lNewPin_2 lNewPinInfoPuk lRepeatPin_2 lRepeatPinInfoPuk "
          "lTryNumDescPUK lSTryNumPUK" },
        { "QLineEdit", "pageAppUnblock", "lineInsertPuk lineNewPinPuk lineRepeatPinPuk" },
        { "QPushButton", "pageAppUnblock", "bCancel_2 bChangePinPuk" },
        { "QWidget", "pageAppUnblock", "fTryNumPUK" },
        { "QLabel", "pagePinPadUnblock",
          "lPinPadImg_2 lPukInfoPinPad lPukInfoPinPad_2 lPukInfoPinPad_3 lPukInfoPinPad_4 lPukInfoPinPad_5 "
          "lCancelDesc_2 lTryNumDescPUKpinpad lSTryNumPUKpinpad" },
        { "QWidget", "pagePinPadUnblock", "fTryNumPUKpinpad" },
        { "QFrame", "pageCorrectChange", "pinChangedFrame" },
        { "QLabel", "pinChangedFrame", "lPinChanged" },
        { "QPushButton", "pageCorrectChange", "bWrocPin" },
        { "QLabel", "pageDisconected", "lno_connection lDisconnect" },
        { "QLabel", "pageBlockedPuk_2", "lPukBlocked_2" },
        { "QPushButton", "pageBlockedPuk_2", "bWrocPuk" },
        { "QLabel", "pageNoElectricLayer", "lPukBlocked_3" },
        { "QFrame", "pageSettings", "settingsBrowserFrame settingsCANFrame" },
        { "QLabel", "settingsBrowserFrame", "label lDesc lDesc2 lDesc3" },
        { "QVBoxLayout", "settingsBrowserFrame", "layoutChecks" },
        { "QPushButton", "settingsBrowserFrame", "bIntegrate" },
        { "QLabel", "settingsCANFrame", "label_2 lCSPChoose" },
        { "QCheckBox", "settingsCANFrame", "cbCANStorage cbCSPChoose" },
        { "QPushButton", "settingsCANFrame", "bCANSettings" },
        { "QLabel", "pageHelp", "lPukBlocked_4 lPukBlocked_5 lPukBlocked_8 lPukBlocked_9 lGuide lLicense lChangelog" },
        { "QTextBrowser", "pageHelp", "tDiagnosticsRaport" },
        { "QPushButton", "pageHelp", "bRaport bDiagnosticStart bCopyRaport" },
        { "QLabel", "pageIntegration", "lIntegration lchange_card" },
        { "QPushButton", "pageIntegration", "bIntegrationFinnish" },
    };
    for (const Row &row : rows) {
        const QString names = row.names;
        QTest::addRow("%s in %s", row.kind, row.inside) << QString(row.kind) << QString(row.inside) << names.split(' ');
    }
}

void TestForms::widgetHasItsNameClassAndPlace()
{
    QFETCH(QString, kind);
    QFETCH(QString, inside);
    QFETCH(QStringList, names);

    const auto *parent = find<QWidget>(inside);
    QVERIFY(parent);

    for (const QString &name : names) {
        const auto *object = parent->findChild<QObject *>(name);
        QVERIFY2(object, qPrintable(name));
        QVERIFY2(object->inherits(kind.toLatin1()), qPrintable(name));
    }
}

void TestForms::namesAreUniqueInTheWindow()
{
    QHash<QString, int> count;
    for (const QWidget *widget : window->findChildren<QWidget *>()) {
        if (!widget->objectName().isEmpty() && !widget->objectName().startsWith("qt_"))
            ++count[widget->objectName()];
    }

    for (auto it = count.cbegin(); it != count.cend(); ++it)
        QVERIFY2(it.value() == 1, qPrintable(it.key()));
}

void TestForms::pagesStandInTheirOrder_data()
{
    QTest::addColumn<QString>("stack");
    QTest::addColumn<QStringList>("pages");
    QTest::addColumn<int>("initial");
    QTest::newRow("pager") << "pager" << QStringList { "pageHome",        "pageAllData",      "pageCertInfo",
                                                       "pageChangePin",   "pageUnblockPin",   "pageCorrectChange",
                                                       "pageDisconected", "pageBlockedPuk_2", "pageNoElectricLayer",
                                                       "pageSettings",    "pageHelp",         "pageIntegration" }
                           << 9;
    QTest::newRow("home") << "pagerBlockedPuk" << QStringList { "pageBlockedPuk", "pageValidPuk" } << 1;
    QTest::newRow("change") << "pagerPinPadOrApp" << QStringList { "pagePinPad", "pageApp" } << 0;
    QTest::newRow("unblock") << "pagerPinOrPinPadPuk" << QStringList { "pageAppUnblock", "pagePinPadUnblock" } << 0;
}

void TestForms::pagesStandInTheirOrder()
{
    QFETCH(QString, stack);
    QFETCH(QStringList, pages);
    QFETCH(int, initial);

    const auto *pager = find<QStackedWidget>(stack);

    QStringList found;
    for (int i = 0; i < pager->count(); ++i)
        found << pager->widget(i)->objectName();
    QCOMPARE(found, pages);
    QCOMPARE(pager->currentIndex(), initial);
}

void TestForms::windowOpensOnTheSettingsPage()
{
    QCOMPARE(ui.pager->currentWidget(), ui.pageSettings);
    QCOMPARE(ui.cbReaders->count(), 1);
    QCOMPARE(ui.cbReaders->currentText(), QString("brak czytnika lub karty"));
    QVERIFY(!ui.cbReaders->isEditable());
    QVERIFY(!ui.frameReaders->isHidden());
    QVERIFY(ui.loading->isHidden());
}

void TestForms::classIsKnownBeforeTheWords_data()
{
    QTest::addColumn<QString>("form");
    for (const QString &form : QDir(VELMOR_TEST_SOURCE_DIR "/forms").entryList({ "*.ui" }))
        QTest::newRow(qPrintable(form)) << form;
}

// What may be translated is set last, when the style sheet has been read for much of the form.
void TestForms::classIsKnownBeforeTheWords()
{
    QFETCH(QString, form);
    QFile file(VELMOR_TEST_SOURCE_DIR "/forms/" + form);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(file.readAll());
    static const QRegularExpression aClass("<property name=\"(class|cssClass)\"[^>]*>\\s*<string([^>]*)>");

    int count = 0;
    for (auto matches = aClass.globalMatch(text); matches.hasNext(); ++count) {
        const auto match = matches.next();
        QVERIFY2(match.captured(2) == " notr=\"true\"", qPrintable(text.mid(match.capturedStart(), 120).simplified()));
    }
    QVERIFY(count > 0);
}

VELMOR_TEST(TestForms)
#include "tst_forms.moc"
