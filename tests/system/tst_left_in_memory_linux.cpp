#include "system/story_runs.h"

#include "simworld/sim_world.h"

// What a core file of the program would tell of a card and its PINs, while a user goes from page to page.
class TestLeftInMemory : public QObject, private StoryRuns {
    Q_OBJECT

private slots:
    void initTestCase()
    {
#ifdef __SANITIZE_ADDRESS__
        QSKIP("The sanitizer keeps what was freed");
#endif
        beginStories();
    }

    // What is found is its own: the stand-in of the card library cleans up behind itself.
    void nothingOfACardIsLeftInMemory()
    {
        QVERIFY(world.reset());
        QVERIFY(world.insertCard("Czytnik Alfa", "anna"));
        const QByteArray pin = "83714206";
        QVERIFY(world.setPin("anna", sim::Qualified, pin.toStdString()));
        const QByteArray puk = "18493750";
        sim::CardState state = *world.cardState("anna");
        state.puk = puk.toStdString();
        state.pins[sim::Authentication].tries = 0;
        QVERIFY(world.setCardState("anna", state));
        const QStringList holder { "Wiśniewska", "Krystyna", "Tadeusz", "Zając", "87042341229", "CAA100017", "KRAKÓW" };

        runStory({ "left_in_memory.py", siblingPath("velmor_send"), VELMOR_TEST_ROOT "/devkit/cards/anna", pin, puk,
                   holder.join('\n'), program(), "-r", "0:Czytnik Alfa||" },
                 {});

        QCOMPARE(world.cardState("anna")->pins[sim::Qualified].pin, std::string("62059384"));
    }
};

VELMOR_TEST(TestLeftInMemory)
#include "tst_left_in_memory_linux.moc"
