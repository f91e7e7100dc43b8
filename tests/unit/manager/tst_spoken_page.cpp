#include "form_fixture.h"
#include "spoken_page.h"

#include <QAccessible>

// Groups of the window and the labels that are their names for a screen reader.
class TestSpokenPage : public QObject, private FormFixture {
    Q_OBJECT

private:
    QString name(const char *group) const
    {
        return QAccessible::queryAccessibleInterface(find<QWidget>(group))->text(QAccessible::Name);
    }
    // With everything around it, up to the window.
    void show(QWidget *part) const
    {
        for (QWidget *each = part; each != window.get(); each = each->parentWidget()) {
            if (auto *pages = qobject_cast<QStackedWidget *>(each->parentWidget()))
                pages->setCurrentWidget(each);
            each->setVisible(true);
        }
    }
    void tellItself(const QString &part) const
    {
        auto *widget = find<QWidget>(part);
        QVERIFY2(widget, qPrintable(part));
        if (auto *label = qobject_cast<QLabel *>(widget))
            label->setText(part);
        widget->setAccessibleName({});
        show(widget);
    }

private slots:
    void initTestCase()
    {
        showPagesToScreenReaders();
        setUpForm();
        window->show();
        ui.cbReaders->clear();
        ui.cbReaders->addItem("cbReaders");
        ui.cbReaders->setEnabled(false);
    }

    void groupIsNamedByItsLabels_data()
    {
        QTest::addColumn<QString>("labels");
        const struct {
            const char *group;
            const char *labels;
        } rows[] = {
            { "header", "lMainTitle lSubTitle lReaderDesc cbReaders" },
            { "frameReaders", "lReaderDesc" },
            { "footer", "lVersion" },
            { "widgetBlurICAO",
              "lCommonName lCommonNameVal lSurname lsurnameVal lNumId lNumIdVal lExpDate lExpDateVal" },
            { "widgetBlurAuthen", "labelTitleAuthenCert lTextAuthenCert" },
            { "widgetBlurAuthor", "labelTitleAuthorCert lTextAuthorCert" },
            { "presenceCert", "labelTitlePresenceCert lTextPresenceCert" },
            { "widgetBlurQualified", "labelTitleQualifiedCert lTextQualifiedCert" },
            { "pageAllData", "lMainTitle" },
            { "pageCertInfo", "lMainTitle lSubTitle" },
            { "pageChangePin", "lSTryNum lpinpadDesc lSTryNumpinpad lInfoPinPad" },
            { "fieldActualPin", "lActualPin lActualPinInfo" },
            { "fieldNewPin", "lNewPin lNewPinInfo" },
            { "fieldRepeatPin", "lRepeatPin lRepeatPinInfo" },
            { "pageUnblockPin",
              "lPukInfoPinPad lPukInfoPinPad_2 lPukInfoPinPad_3 lPukInfoPinPad_4 lPukInfoPinPad_5 lCancelDesc_2 "
              "lTryNumDescPUKpinpad lSTryNumPUKpinpad" },
            { "fieldInsertPuk", "lPuk lPinInfoPuk" },
            { "fieldNewPinPuk", "lNewPin_2 lNewPinInfoPuk" },
            { "fieldRepeatPinPuk", "lRepeatPin_2 lRepeatPinInfoPuk" },
            { "pageCorrectChange", "lMainTitle lSubTitle" },
            { "pageSettings", "" },
            { "settingsBrowserFrame", "label lDesc lDesc3" },
            { "settingsCANFrame", "label_2" },
            { "pageIntegration", "lMainTitle" },
        };
        for (const auto &row : rows)
            QTest::newRow(row.group) << row.labels;
    }
    void groupIsNamedByItsLabels()
    {
        QFETCH(QString, labels);
        const char *const group = QTest::currentDataTag();
        find<QWidget>(group)->setAccessibleName({});
        show(find<QWidget>(group));
        const QStringList parts = labels.split(' ', Qt::SkipEmptyParts);
        for (const QString &part : parts) {
            tellItself(part);
            QVERIFY2(name(group).split(", ").contains(part), qPrintable(name(group)));
        }
        QStringList shown;
        // Some stand on pages of which there is one at a time.
        std::copy_if(parts.begin(), parts.end(), std::back_inserter(shown),
                     [this](const QString &part) { return find<QWidget>(part)->isVisible(); });
        QCOMPARE(QAccessible::queryAccessibleInterface(find<QWidget>(group))->role(), QAccessible::Grouping);
        QCOMPARE(name(group), shown.join(", "));
    }

    void labelWithANameOfItsOwnIsToldByIt()
    {
        for (const char *part : { "lActualPin", "lActualPinInfo" })
            tellItself(part);
        ui.lActualPinInfo->setAccessibleName("hint");
        QCOMPARE(name("fieldActualPin"), QString("lActualPin, hint"));
    }
    // Its own name tells of the reader, which is heard from the box beside it.
    void descriptionOfTheReaderIsToldAsItStands()
    {
        tellItself("lReaderDesc");
        ui.lReaderDesc->setAccessibleName("another");
        QCOMPARE(name("frameReaders"), QString("lReaderDesc"));
    }
    void whatIsHiddenOrEmptyIsNotTold()
    {
        for (const char *part : { "lActualPin", "lActualPinInfo" })
            tellItself(part);
        ui.lActualPin->hide();
        QCOMPARE(name("fieldActualPin"), QString("lActualPinInfo"));
        ui.lActualPinInfo->clear();
        QCOMPARE(name("fieldActualPin"), QString());
    }
    void markupIsNotTold()
    {
        for (const char *part : { "lActualPin", "lActualPinInfo" })
            tellItself(part);
        ui.lActualPin->setText("<b>4</b> digits<br>at  most");
        ui.lActualPinInfo->setText("  1 < 2  ");
        QCOMPARE(name("fieldActualPin"), QString("4 digits at most, 1 < 2"));
    }
    void boxThatCanBeChosenFromIsHeardForItself()
    {
        for (const char *part : { "lMainTitle", "cbReaders" })
            tellItself(part);
        ui.lSubTitle->hide();
        ui.lReaderDesc->hide();
        QCOMPARE(name("header"), QString("lMainTitle, cbReaders"));
        ui.cbReaders->setEnabled(true);
        QCOMPARE(name("header"), QString("lMainTitle"));
        ui.cbReaders->setEnabled(false);
    }
    void groupWithANameOfItsOwnIsToldByIt()
    {
        tellItself("lActualPin");
        find<QWidget>("fieldActualPin")->setAccessibleName("own");
        QCOMPARE(name("fieldActualPin"), QString("own"));
        find<QWidget>("fieldActualPin")->setAccessibleName({});
    }
    void plainWidgetThatTabReachesIsTextAndAnyOtherStaysWhatItIs()
    {
        const auto roleOf = [](QWidget &widget, Qt::FocusPolicy policy) {
            widget.setFocusPolicy(policy);
            return QAccessible::queryAccessibleInterface(&widget)->role();
        };
        QWidget widgets[2];
        QFrame frames[2];
        QPushButton button;
        QCOMPARE(roleOf(widgets[0], Qt::TabFocus), QAccessible::StaticText);
        QCOMPARE(roleOf(frames[0], Qt::TabFocus), QAccessible::StaticText);
        QVERIFY(roleOf(widgets[1], Qt::StrongFocus) != QAccessible::StaticText);
        QVERIFY(roleOf(frames[1], Qt::NoFocus) != QAccessible::StaticText);
        QCOMPARE(roleOf(button, Qt::TabFocus), QAccessible::Button);
    }
};

VELMOR_TEST(TestSpokenPage)
#include "tst_spoken_page.moc"
