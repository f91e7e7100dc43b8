#include "gui/gui_base.h"
#include "shared.h"
#include "themed_frame.h"

#include "support/testmain.h"

// A frame that the theme dresses.
class TestThemedFrame : public QObject {
    Q_OBJECT

private slots:
    void frameHasTheStyleOfTheThemeFromTheStart()
    {
        Shared::loadResources();
        const QString style = GuiBase::instance()->file("styles-window.css");
        QVERIFY(!style.isEmpty());
        QCOMPARE(ThemedFrame().styleSheet(), style);
    }
};

VELMOR_TEST(TestThemedFrame)
#include "tst_themed_frame.moc"
