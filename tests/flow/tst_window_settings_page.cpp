#include "base/ipc_msg.h"
#include "base/platform.h"
#include "base/settings.h"
#include "browser/integrator.h"
#include "platform/os.h"
#include "support/fake_programs.h"
#include "support/flow.h"
#include "support/popup_closer.h"
#include "support/profile_folder.h"

#include <QCheckBox>
#include <QLayout>

// The settings page with its browsers, and the page with its results.
class TestWindowSettingsPage : public QObject {
    Q_OBJECT

private:
    static constexpr const char *family = "Chrome, Chromium, Edge";
    // Its row is one of Linux alone.
    static bool hasFamily() { return Platform::word() == "lin"; }

    std::unique_ptr<FakePrograms> programs;
    std::unique_ptr<Flow> flow;

    static Settings &store() { return *Settings::instance(); }
    static ProfileFolder profile(const QByteArray &version)
    {
        return { Os().profilesRoot("Firefox") + "a.default", version };
    }
    QCheckBox *check(const char *name) const { return flow->find<QCheckBox>(name); }
    bool hidden(const char *name) const { return flow->widget(name)->isHidden(); }
    bool waitForResult() const
    {
        return QTest::qWaitFor([this] { return flow->page() == "pageIntegration" && !flow->loaderShown(); });
    }
    // Boxes that were just made are shown by the event loop, and a layout of hidden ones counts as empty.
    void openSettings() const
    {
        flow->button("bSettings")->click();
        QCoreApplication::processEvents();
    }
    void openSettingsWithACard() const
    {
        QVERIFY(flow->showCard("anna"));
        openSettings();
    }
    // A folder stands where its file should be.
    void tickFirefoxThatCannotBeWritten(const ProfileFolder &files) const
    {
        flow->openWindow();
        openSettings();
        QFile::remove(files.path("pkcs11.txt"));
        QVERIFY(QDir().mkdir(files.path("pkcs11.txt")));
        check("Firefox")->setChecked(true);
    }

private slots:
    void initTestCase() { Flow::setUpApplication(); }
    void init()
    {
        programs = std::make_unique<FakePrograms>();
        programs->installFirefox();
        flow = std::make_unique<Flow>();
        for (const char *key : { SettingsKey::hideCheckboxCanRemember, SettingsKey::useCspForRsa })
            store().setValue(key, false);
    }
    void cleanup()
    {
        flow.reset();
        programs.reset();
        TestHome::empty();
    }

    void withoutABrowserTheOtherOptionsAreLeft()
    {
        if (hasFamily())
            QSKIP("One row is listed here whatever is installed");
        programs.reset();
        flow->openWindow();
        openSettings();
        QVERIFY(!flow->button("bIntegrate")->isEnabled());
        QVERIFY(flow->button("bCANSettings")->isEnabled());
        QVERIFY(check("cbCANStorage")->isEnabled() && check("cbCSPChoose")->isEnabled());
        QList<QLabel *> labels = flow->widget("settingsBrowserFrame")->findChildren<QLabel *>();
        QVERIFY(std::any_of(labels.cbegin(), labels.cend(), [](const QLabel *label) {
            return label->text() == "Brak zainstalowanych przeglądarek wymagających integracji";
        }));
        flow->button("bIntegrate")->setEnabled(true);
        flow->button("bIntegrate")->click();
        QTRY_VERIFY(!flow->loaderShown());
    }

    void pageListsTheBrowsersInTheirOrder()
    {
        const ProfileFolder files = profile("128.0");
        files.put("user.js", "user_pref(\"security.osclientcerts.autoload\", true);\r\n");
        flow->openWindow();
        LogCatcher log;
        openSettings();

        QVERIFY(log.has("show settings"));
        QCOMPARE(flow->title(), QString("Ustawienia"));
        QCOMPARE(flow->label("lSubTitle")->text(), QString());
        QCOMPARE(check("Firefox")->text(), QString("Przeglądarce Firefox"));
        QVERIFY(check("Firefox")->isChecked());
        QCOMPARE(flow->window->findChild<QCheckBox *>(family) != nullptr, hasFamily());
        if (hasFamily()) {
            QCOMPARE(check(family)->text(), QString("Przeglądarkach: Chrome, Chromium, Edge"));
            QVERIFY(!check(family)->isChecked());
            QVERIFY(check(family)->isVisible());
        }
        QVERIFY(flow->button("bIntegrate")->isEnabled());
        QVERIFY(flow->button("bSettings")->isEnabled());
        QVERIFY(!flow->readersBox()->isEnabled());
        QVERIFY(hidden("frameReaders"));
        QCOMPARE(flow->button("bIntegrate")->accessibleDescription(), QString("zapisuje zmiany"));
        QCOMPARE(flow->button("bCANSettings")->accessibleDescription(), QString("zapisuje zmiany"));
    }

    void tabGoesThroughThePageInReadingOrder()
    {
        flow->openWindow();
        openSettings();
        openSettings();
        QVERIFY(QTest::qWaitForWindowActive(flow->window.get()));
        flow->widget("lDesc2")->setFocus();
        QStringList order { "Firefox", family, "bIntegrate", "cbCANStorage", "cbCSPChoose", "bCANSettings" };
        if (!hasFamily())
            order.removeAll(family);
        for (const QString &name : qAsConst(order)) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            QCOMPARE(QApplication::focusWidget()->objectName(), name);
        }
    }

    void subtitleOfThePageBeforeGoes_data()
    {
        QTest::addColumn<QByteArray>("button");
        QTest::newRow("settings") << QByteArray("bSettings");
        QTest::newRow("help") << QByteArray("bHelp");
    }
    void subtitleOfThePageBeforeGoes()
    {
        QFETCH(QByteArray, button);
        QVERIFY(flow->showCard("anna"));
        flow->button("bArrowAuthenCert")->click();
        QVERIFY(!flow->label("lSubTitle")->text().isEmpty());

        flow->button(button.constData())->click();

        QCOMPARE(flow->label("lSubTitle")->text(), QString());
        QCOMPARE(flow->label("lMainTitle")->geometry(), QRect(35, 25, 422, 31));
    }

    void buttonConnectsBehindTheLoader()
    {
        const ProfileFolder files = profile("128.0");
        openSettingsWithACard();
        flow->widget("lchange_card")->show();
        check("Firefox")->setChecked(true);
        LogCatcher log;

        flow->button("bIntegrate")->click();

        QVERIFY(log.has("empty checks  false"));
        QVERIFY(flow->loaderShown());
        QCOMPARE(flow->label("loadingDesc")->text(), QString("Proszę czekać..."));
        QVERIFY(hidden("bWroc"));
        QVERIFY(!files.has("user.js"));
        QVERIFY(waitForResult());
        QVERIFY(files.has("user.js"));
        QVERIFY(hidden("lchange_card"));
        QString report = "<span>Podłączono moduł obsługujący kartę velmor<br/> w programie \"Firefox\".<br/>Zmiany "
                         "będą widoczne po ponownym uruchomieniu przeglądarki.</span><br/><br/>";
        QString spoken = "Podłączono moduł obsługujący kartę velmor w programie \"Firefox\".Zmiany będą widoczne po "
                         "ponownym uruchomieniu przeglądarki.";
        if (hasFamily()) {
            report += "<span>Ustawienia pozostały bez zmian dla aplikacji \"Chrome, Chromium, Edge\"</span><br/><br/>";
            spoken += "Ustawienia pozostały bez zmian dla aplikacji \"Chrome, Chromium, Edge\"";
        }
        QCOMPARE(flow->label("lIntegration")->text(), report);
        QCOMPARE(flow->label("lIntegration")->accessibleName(), spoken);
        QCOMPARE(QApplication::focusWidget(), flow->widget("lIntegration"));

        flow->button("bIntegrationFinnish")->click();
        QCOMPARE(flow->page(), QString("pageSettings"));
        QVERIFY(check("Firefox")->isChecked());
        QVERIFY(!hasFamily() || !check(family)->isChecked());
        QVERIFY(!hidden("bWroc"));
    }

    void editsComeHalfASecondAfterTheLoader()
    {
        flow->openWindow();
        openSettings();
        QElapsedTimer clock;
        clock.start();
        flow->button("bIntegrate")->click();
        QVERIFY(waitForResult());
        QVERIFY(clock.elapsed() >= 500);
    }

    // Until the result stands, nothing leads off the page, and the ticks are carried out.
    void nothingLeadsOffThePageBeforeTheResult_data()
    {
        QTest::addColumn<QByteArray>("way");
        for (const char *way : { "bSettings", "bHelp", "settings", "help", "windowFocus", "readers" })
            QTest::newRow(way) << QByteArray(way);
    }
    void nothingLeadsOffThePageBeforeTheResult()
    {
        QFETCH(QByteArray, way);
        const ProfileFolder files = profile("128.0");
        openSettingsWithACard();
        check("Firefox")->setChecked(true);
        flow->button("bIntegrate")->click();
        LogCatcher log;

        if (way.startsWith('b')) {
            QVERIFY(!flow->button(way.constData())->isEnabled());
            // Also where something has switched it on again.
            flow->button(way.constData())->setEnabled(true);
            flow->button(way.constData())->click();
        } else {
            const QByteArray value = way == "readers" ? "0:Czytnik Alfa||" : "1";
            flow->window->recvIpcMsg(IpcMsg { { "to", "velmor_manager" }, { way, value } });
        }

        QCOMPARE(flow->page(), QString("pageSettings"));
        QCOMPARE(flow->title(), QString("Ustawienia"));
        QVERIFY(!log.has("show settings") && !log.has("show help"));
        QVERIFY(QTest::qWaitFor([&files] { return files.has("user.js"); }));
        QTRY_VERIFY(!flow->label("lIntegration")->accessibleName().isEmpty() || way == "settings");
        QTRY_VERIFY(!flow->loaderShown());
        QVERIFY(flow->button("bSettings")->isEnabled());
    }

    // Each in its turn, once the result stands.
    void messagesOfTheMeantimeAreTreatedAfterTheResult()
    {
        openSettingsWithACard();
        flow->button("bIntegrate")->click();
        LogCatcher log;
        flow->window->recvIpcMsg(IpcMsg { { "to", "velmor_manager" }, { "help", "1" } });
        flow->window->recvIpcMsg(IpcMsg { { "to", "velmor_manager" }, { "settings", "1" } });
        QVERIFY(!log.has("show help"));

        QTRY_VERIFY(log.has("show settings"));

        QVERIFY(log.text().indexOf("show help") < log.text().indexOf("show settings"));
        QCOMPARE(flow->page(), QString("pageSettings"));
        // From now on at once.
        flow->window->recvIpcMsg(IpcMsg { { "to", "velmor_manager" }, { "help", "1" } });
        QCOMPARE(flow->page(), QString("pageHelp"));
    }

    void closeDoesNotWaitForTheResult()
    {
        flow->openWindow();
        openSettings();
        flow->button("bIntegrate")->click();
        LogCatcher log;
        flow->window->recvIpcMsg(IpcMsg { { "to", "velmor_manager" }, { "close", "1" } });
        QVERIFY(log.has("Close from ipc"));
        QTRY_VERIFY(!flow->window->isVisible());
    }

    void emptyLayoutDoesNothing()
    {
        flow->openWindow();
        openSettings();
        Integrator::checksClear(flow->find<QLayout>("layoutChecks"));
        LogCatcher log;
        flow->window->integrateApps();
        QVERIFY(log.has("empty checks  true"));
        QVERIFY(!flow->loaderShown());

        // Nothing was done, so the label keeps its text.
        flow->label("lIntegration")->setText("stays");
        flow->window->integrateApps2();
        QCOMPARE(flow->page(), QString("pageIntegration"));
        QCOMPARE(flow->label("lIntegration")->text(), QString("stays"));
        QCOMPARE(flow->label("lIntegration")->accessibleName(), QString());
    }

    void endShowsTheResultOfTheTimeBefore()
    {
        flow->openWindow();
        openSettings();
        flow->window->integrateApps2();
        const QString report = flow->label("lIntegration")->text();
        openSettings();
        flow->label("lIntegration")->setText("other");
        flow->window->integrationEnds();
        QCOMPARE(flow->page(), QString("pageIntegration"));
        QCOMPARE(flow->label("lIntegration")->text(), report);
    }

    void failedEditIsToldByADialogAndByTheReport()
    {
        const ProfileFolder files = profile("70.0");
        tickFirefoxThatCannotBeWritten(files);
        PopupCloser popups;

        flow->button("bIntegrate")->click();

        QVERIFY(waitForResult());
        QCOMPARE(popups.messages, QStringList { "Nie można zapisać pliku: " + files.path("pkcs11.txt") });
        QVERIFY(flow->label("lIntegration")
                    ->text()
                    .startsWith("<span>Ustawienia pozostały bez zmian dla aplikacji \"Firefox\".</span>"));
        flow->button("bIntegrationFinnish")->click();
        QVERIFY(!check("Firefox")->isChecked());
    }

    // The Monitor may ask for the page at any time.
    void pageThatIsEnteredAnewUnderTheDialogKeepsTheTicks()
    {
        if (!hasFamily())
            QSKIP("Takes two rows");
        const ProfileFolder files = profile("70.0");
        tickFirefoxThatCannotBeWritten(files);
        check(family)->setChecked(true);
        PopupCloser popups;
        popups.meanwhile = [this] { flow->window->moveToSettingsPage(false); };

        flow->button("bIntegrate")->click();

        QVERIFY(waitForResult());
        QCOMPARE(popups.messages.size(), 1);
        QVERIFY(flow->label("lIntegration")->text().contains("Podłączono moduł obsługujący kartę velmor"));
        flow->button("bIntegrationFinnish")->click();
        QVERIFY(check(family)->isChecked());
    }

    void ticksThatWereNotConfirmedChangeNothingAtTheEnd()
    {
        const ProfileFolder files = profile("128.0");
        const ProfileFolder old(Os().profilesRoot("Firefox") + "b.default", "70.0");
        flow->openWindow();
        openSettings();
        for (QCheckBox *box : flow->widget("settingsBrowserFrame")->findChildren<QCheckBox *>())
            box->setChecked(true);
        flow->closeWindow();
        QVERIFY(!files.has("user.js"));
        QCOMPARE(old.content("pkcs11.txt"), ProfileFolder::otherModules("\r\n"));
        QVERIFY(!QFile::exists(QDir::homePath() + "/.pki"));
    }
};

VELMOR_TEST(TestWindowSettingsPage)
#include "tst_window_settings_page.moc"
