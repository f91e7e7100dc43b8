#include "gui/popup.h"
#include "support/testmain.h"

#include <QLabel>
#include <QPushButton>

// The dialog of a program whose resources are not there: no theme, no pictures, no settings of the product.
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
};

VELMOR_TEST_MAIN(TestPopupBare)
#include "tst_popup_bare.moc"
