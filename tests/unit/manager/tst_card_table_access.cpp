#include "card_table_access.h"

#include "support/testmain.h"

#include <QAccessible>
#include <QLabel>
#include <QTableWidget>

// The table of certificates, as a screen reader finds it.
class TestCardTableAccess : public QObject {
    Q_OBJECT

private slots:
    void onlyTheTableOfCardsIsAGroup()
    {
        showCardsToScreenReaders();
        QTableWidget cards, other;
        QLabel label;
        cards.setObjectName("tableCert");
        other.setObjectName("tableOther");
        label.setObjectName("tableCert");
        const auto roleOf = [](QWidget *widget) { return QAccessible::queryAccessibleInterface(widget)->role(); };

        QCOMPARE(roleOf(&cards), QAccessible::Grouping);
        QCOMPARE(roleOf(&other), QAccessible::Table);
        QCOMPARE(roleOf(&label), QAccessible::StaticText);
    }
};

VELMOR_TEST(TestCardTableAccess)
#include "tst_card_table_access.moc"
