#include "gui/popup.h"
#include "support/resource_blob.h"
#include "support/testmain.h"

#include <QFile>
#include <QLabel>
#include <QLayout>
#include <QPushButton>

// The dialog of a program whose resources are not there: no theme, no pictures, no settings of the product unless the
// test gives it some.
class TestPopupBare : public QObject {
    Q_OBJECT

private slots:
    void missingResourcesLeaveAPlainDialog()
    {
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("warning.svg"));
        Popup popup;

        popup.setIconMessage(Popup::Warning, "Jeden", QDialogButtonBox::Ok);
        popup.show(300, 100);

        QVERIFY(popup.isVisible());
        QVERIFY(popup.findChild<QWidget *>("mainFrame")->styleSheet().isEmpty());
        QVERIFY(!popup.property("shadowButtons").isValid());
        QCOMPARE(popup.findChild<QPushButton *>("bClose")->maximumSize(), QSize(40, 40));
        QVERIFY(popup.findChild<QLabel *>("lText")->text().contains("Jeden"));
    }

    void everyKeyOfTheProductsSettingsIsOptional_data()
    {
        QTest::addColumn<QByteArray>("ini");
        QTest::addColumn<bool>("shadowButtons");
        QTest::addColumn<int>("closeSize");
        QTest::addColumn<int>("rightMargin");
        const int formMargin = Popup().findChild<QWidget *>("header")->layout()->contentsMargins().right();
        QVERIFY(formMargin != 33);

        QTest::newRow("all") << QByteArray("shadowButtons=true\nbCloseSize=55\nbCloseRightMargin=33\n") << true << 55
                             << 33;
        QTest::newRow("no shadow wanted")
            << QByteArray("shadowButtons=false\nbCloseSize=55\nbCloseRightMargin=33\n") << false << 55 << 33;
        QTest::newRow("no shadowButtons") << QByteArray("bCloseSize=55\nbCloseRightMargin=33\n") << false << 55 << 33;
        QTest::newRow("no bCloseSize") << QByteArray("shadowButtons=true\nbCloseRightMargin=33\n") << true << 40 << 33;
        QTest::newRow("no bCloseRightMargin")
            << QByteArray("shadowButtons=true\nbCloseSize=55\n") << true << 55 << formMargin;
        QTest::newRow("smaller than the form") << QByteArray("bCloseSize=24\n") << false << 24 << formMargin;
        QTest::newRow("none") << QByteArray("other=1\n") << false << 40 << formMargin;
    }
    void everyKeyOfTheProductsSettingsIsOptional()
    {
        QFETCH(QByteArray, ini);
        QFETCH(int, closeSize);
        QFETCH(int, rightMargin);
        const ResourceBlob resource(":/settings/popup.ini", ini);
        QFile file(":/settings/popup.ini");
        QVERIFY(resource.isRegistered() && file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), ini);

        Popup popup;
        popup.setMessage("Information", "Jeden", QDialogButtonBox::Ok);
        popup.show(300, 100);

        QTEST(popup.property("shadowButtons").toBool(), "shadowButtons");
        const auto *cross = popup.findChild<QPushButton *>("bClose");
        QVERIFY2(cross->width() <= closeSize && cross->height() <= closeSize,
                 qPrintable(QString::number(cross->width())));
        QCOMPARE(popup.findChild<QWidget *>("header")->layout()->contentsMargins().right(), rightMargin);
        QCOMPARE(Popup().findChild<QPushButton *>("bClose")->maximumSize(), QSize(closeSize, closeSize));
    }
};

VELMOR_TEST(TestPopupBare)
#include "tst_popup_bare.moc"
