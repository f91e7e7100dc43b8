#include "gui/kept_icon.h"
#include "shared.h"
#include "support/testmain.h"

// One icon for each file, whoever asks, so that the toolkit's store of pictures holds each once.
class TestKeptIcon : public QObject {
    Q_OBJECT

public:
    QList<bool> heldAfterItsApplication;

private slots:
    void initTestCase() { Shared::loadResources(); }

    void sameFileIsTheSameIcon()
    {
        const QIcon icon = keptIcon(":/images/no_photo.svg");
        QVERIFY(!icon.pixmap(64, 64).isNull());
        QCOMPARE(keptIcon(":/images/no_photo.svg").cacheKey(), icon.cacheKey());
    }
    void anotherFileIsAnother()
    {
        QVERIFY(keptIcon(":/images/no_photo.svg").cacheKey() != keptIcon(":/images/pinpad.svg").cacheKey());
    }
    // Later nobody is there who could let go of what a plugin has drawn.
    void noneOutlivesItsApplication() { QCOMPARE(heldAfterItsApplication, QList<bool>({ false, false })); }
};

int main(int argc, char *argv[])
{
    TestHome home;
    TestKeptIcon test;
    for (int i = 0; i < 2; ++i) {
        QIcon own;
        {
            QApplication application(argc, argv);
            Shared::loadResources();
            own = keptIcon(":/images/no_photo.svg");
        }
        test.heldAfterItsApplication << !own.isDetached();
    }
    QApplication application(argc, argv);
    return QTest::qExec(&test, argc, argv);
}
#include "tst_kept_icon.moc"
