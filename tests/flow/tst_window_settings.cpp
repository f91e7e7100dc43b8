#include "page_entry.h"

#include "base/platform.h"
#include "base/settings.h"
#include "support/fake_programs.h"

#include <QCheckBox>

// How the settings page is entered: what goes with the page before, and what is made anew.
class TestWindowSettings : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<FakePrograms> programs;
    std::unique_ptr<Flow> flow;

    QCheckBox *check(const char *name) const { return flow->find<QCheckBox>(name); }
    QList<QCheckBox *> browsers() const { return flow->widget("settingsBrowserFrame")->findChildren<QCheckBox *>(); }
    void openSettings() const
    {
        flow->button("bSettings")->click();
        QCoreApplication::processEvents();
    }

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init()
    {
        programs = std::make_unique<FakePrograms>();
        flow = std::make_unique<Flow>();
        for (const char *key : { SettingsKey::hideCheckboxCanRemember, SettingsKey::useCspForRsa })
            Settings::instance()->setValue(key, false);
    }
    void cleanup()
    {
        flow.reset();
        programs.reset();
    }

    void entryTakesAwayThePageBefore()
    {
        flow.reset();
        PageEntry entry;
        entry.typeAPin();
        QVERIFY(!QTest::currentTestFailed());

        entry.press("bSettings");

        entry.verifyItIs("pageSettings", "Ustawienia", "pageSettings");
        QVERIFY(entry.flow->button("bSettings")->isEnabled());
    }

    void everyEntryRebuildsThePage()
    {
        programs->installFirefox();
        flow->openWindow();
        openSettings();
        const int count = browsers().size();
        QCOMPARE(browsers().first()->text(), QString("Przeglądarce Firefox"));
        QCOMPARE(browsers().first()->objectName(), QString("Firefox"));
        QCOMPARE(browsers().first()->cursor().shape(), Qt::PointingHandCursor);
        QCOMPARE(flow->widget("lDesc2")->nextInFocusChain(), browsers().first());
        for (QCheckBox *box : QList<QCheckBox *> { check("cbCANStorage"), check("cbCSPChoose") } + browsers())
            box->setChecked(true);

        flow->button("bHelp")->click();
        openSettings();

        QCOMPARE(browsers().size(), count);
        for (const QCheckBox *box : QList<QCheckBox *> { check("cbCANStorage"), check("cbCSPChoose") } + browsers())
            QVERIFY(!box->isChecked());
    }

    // Also where there was none before. On Linux a row is listed whatever is installed.
    void oneBrowserIsEnoughToConnect()
    {
        if (Platform::word() != "lin")
            programs->installFirefox();
        flow->openWindow();
        flow->button("bIntegrate")->setEnabled(false);

        openSettings();

        QCOMPARE(browsers().size(), 1);
        if (Platform::word() == "lin")
            QCOMPARE(browsers().first()->text(), QString("Przeglądarkach: Chrome, Chromium, Edge"));
        QVERIFY(flow->button("bIntegrate")->isEnabled());
    }

    void backButtonNeedsAReader()
    {
        QVERIFY(flow->showCard("anna"));
        openSettings();
        QVERIFY(!flow->widget("bWroc")->isHidden());
        flow->window->loadedReaders({}, "NO_READER");
        openSettings();
        QVERIFY(flow->widget("bWroc")->isHidden());
    }

    // The page of the results remembers on which of its widgets the user stood, also when he left it by the footer.
    void nextResultDoesNotBeginAtItsButton()
    {
        flow->openWindow();
        openSettings();
        QVERIFY(QTest::qWaitForWindowActive(flow->window.get()));
        flow->window->integrateApps2();
        flow->widget("bIntegrationFinnish")->setFocus();
        flow->widget("bSettings")->setFocus();
        openSettings();
        flow->widget("bCANSettings")->setFocus();

        flow->button("bCANSettings")->click();

        QCOMPARE(flow->page(), QString("pageIntegration"));
        QCOMPARE(QApplication::focusWidget(), flow->widget("lIntegration"));
        QCOMPARE(flow->label("lIntegration")->accessibleName(), QString());
    }
};

VELMOR_TEST(TestWindowSettings)
#include "tst_window_settings.moc"
