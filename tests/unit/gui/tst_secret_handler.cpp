#include "gui/secret_text.h"
#include "support/testmain.h"

#include <QAccessible>
#include <QLabel>

// Of a program in which nobody else stands in the way of the events: by itself the toolkit has no handler.
class TestSecretHandler : public QObject {
    Q_OBJECT

private slots:
    void handlerStaysAfterWhatItHandsOn()
    {
        QVERIFY(!QAccessible::installUpdateHandler(nullptr));
        tellSecretsAsBullets();
        const QAccessible::UpdateHandler handler = QAccessible::installUpdateHandler(nullptr);
        QVERIFY(handler);
        QAccessible::installUpdateHandler(handler);
        QLabel label;
        QAccessibleEvent event(&label, QAccessible::NameChanged);

        handler(&event);

        QVERIFY(QAccessible::installUpdateHandler(handler) == handler);
    }
};

VELMOR_TEST(TestSecretHandler)
#include "tst_secret_handler.moc"
