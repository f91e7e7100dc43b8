// Does one thing a given number of times, so that its instructions can be counted: what one more costs is the
// difference between two runs. Usage: count_actions start|card|parser|message COUNT

#include "support/flow.h"

#include "base/ipc_msg.h"
#include "card/card-parser.h"

#include <QFile>
#include <QSvgRenderer>

#include <cstdio>
#include <cstdlib>
#include <map>

extern "C" void countedStart(Flow &flow);

namespace {

// Each is too small to be told from what the system does besides.
constexpr int small = 200;

// Window built, shown and painted. Not closed: what goes on meanwhile, the loader's pictures among it, goes by the
// clock.
void start(int count)
{
    Flow::setUpApplication();
    std::vector<std::unique_ptr<Flow>> flows;
    for (int i = 0; i < count; ++i) {
        flows.push_back(std::make_unique<Flow>());
        countedStart(*flows.back());
    }
}

// The loaders' pictures move by the clock: the slower the machine, the more of them there are in a card read.
class StandStill : public QObject {
public:
    bool eventFilter(QObject *object, QEvent *event) override
    {
        return event->type() == QEvent::Timer && qobject_cast<QSvgRenderer *>(object->parent());
    }
};

// From the list of readers to the photo.
void card(int count)
{
    Flow::setUpApplication();
    StandStill pictures;
    QCoreApplication::instance()->installEventFilter(&pictures);
    Flow flow;
    if (!flow.showCard("anna"))
        qFatal("the card was not read");
    for (int i = 0; i < count; ++i) {
        flow.window->loadAll();
        if (!QTest::qWaitFor([&] { return !flow.loaderShown() && flow.photoArrived(); }, 600000))
            qFatal("the card was not read");
    }
}

void parser(int count)
{
    DGParser parser;
    for (const char *name : { "DG1", "DG2", "DG11", "DG12", "DG13" }) {
        QFile file(QString(VELMOR_TEST_ROOT "/devkit/cards/anna/%1.bin").arg(name));
        if (!file.open(QIODevice::ReadOnly))
            qFatal("no card");
        parser.loadDg(name, file.readAll());
    }
    for (int i = 0; i < count * small; ++i) {
        const int length = parser.documentNumber().size() + parser.expiryDate(false).size() + parser.sex().size()
            + parser.nationality().size() + parser.personalNumber().size() + parser.birthDate().size()
            + parser.birthPlace().size() + parser.issueDate().size() + parser.issuingAuthority().size()
            + parser.familyName().size() + parser.fatherName().size() + parser.motherName().size()
            + parser.surname().size() + parser.firstName().size() + parser.secondName().size() + parser.photo().size();
        if (length == 0)
            qFatal("nothing was read");
    }
}

// A list of readers, written and read.
void message(int count)
{
    for (int i = 0; i < count * small; ++i) {
        const IpcMsg sent { { "to", "velmor_manager" },
                            { "from", "velmor_monitor" },
                            { "readers", "0:Czytnik Alfa 00 00||Czytnik Beta 01 00||" } };
        const IpcMsg read(sent.serialize());
        if (read.param("readers").isEmpty())
            qFatal("nothing was read");
    }
}

} // namespace

// By this name callgrind knows what is to be counted.
extern "C" __attribute__((noinline, visibility("default"))) void countedStart(Flow &flow)
{
    flow.openWindow();
    flow.window->repaint();
}

int main(int argc, char *argv[])
{
    const std::map<std::string, void (*)(int)> actions {
        { "start", start }, { "card", card }, { "parser", parser }, { "message", message }
    };
    const auto action = argc == 3 ? actions.find(argv[1]) : actions.end();
    if (action == actions.end()) {
        std::fprintf(stderr, "usage: count_actions start|card|parser|message COUNT\n");
        return 2;
    }
    TestHome home;
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext &, const QString &text) {
        if (type == QtFatalMsg)
            std::fprintf(stderr, "%s\n", qPrintable(text));
    });
    action->second(std::atoi(argv[2]));
    return 0;
}
