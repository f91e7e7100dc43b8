#include "gui/kept_icon.h"
#include "shared.h"
#include "support/testmain.h"

// One icon for each file, whoever asks, so that the toolkit's store of pictures holds each once.
class TestKeptIcon : public QObject {
    Q_OBJECT

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
};

VELMOR_TEST(TestKeptIcon)
#include "tst_kept_icon.moc"
