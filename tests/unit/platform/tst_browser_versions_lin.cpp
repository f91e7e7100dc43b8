#include "platform/os.h"
#include "support/fake_dpkg.h"

// The browsers that the report tells of.
class TestBrowserVersions : public QObject {
    Q_OBJECT

private slots:
    void browserIsToldByTheNameOfItsPackage_data()
    {
        QTest::addColumn<QString>("label");
        QTest::newRow("firefox") << "Firefox";
        QTest::newRow("firefox-esr") << "Firefox ESR";
        QTest::newRow("chromium") << "Chromium";
        QTest::newRow("google-chrome-stable") << "Google Chrome";
        QTest::newRow("google-chrome-beta") << "Google Chrome Beta";
        QTest::newRow("microsoft-edge-stable") << "Microsoft Edge";
        QTest::newRow("brave-browser") << "Brave";
        QTest::newRow("opera-stable") << "Opera";
        QTest::newRow("vivaldi-stable") << "Vivaldi";
    }

    void browserIsToldByTheNameOfItsPackage()
    {
        QFETCH(QString, label);
        const QByteArray package = QTest::currentDataTag();
        FakeDpkg dpkg;
        dpkg.setOutput("ii \t" + package + "\t119.0\tamd64\tbrowser\nii \t" + package
                       + "\t118.0\ti386\tbrowser\nii \tlib" + package + "\t117.0\tamd64\tbrowser\n");

        QCOMPARE(Os().browserVersions(),
                 (QMap<QString, QString> { { label, "119.0" }, { label + " (32-bit)", "118.0" } }));
    }
};

VELMOR_TEST(TestBrowserVersions)
#include "tst_browser_versions_lin.moc"
