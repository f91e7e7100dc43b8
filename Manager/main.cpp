#include "window.h"

#include "app/app.h"
#include "app/version.h"
#include "base/common.h"
#include "base/crypto_memory.h"
#include "base/platform.h"
#include "gui/font_configuration.h"
#include "gui/gui_base.h"
#include "ipc/ipc.h"
#include "reader_list.h"
#include "shared.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QFont>
#include <QLibraryInfo>
#include <QTranslator>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

namespace {

constexpr char programId[] = "Manager";
constexpr char architecture[] = "x86_64";
constexpr QSize designSize(900, 697);

// Before any parser exists, so a joined form of the option does not count here although the parser knows it.
bool hasArgument(int argc, char *argv[], const char *wanted)
{
    for (int i = 0; i < argc; ++i) {
        if (std::strcmp(argv[i], wanted) == 0)
            return true;
    }
    return false;
}

// The factors must be known before the lasting application is built, and the screens only with an application: so one
// is built for this question alone, on a copy of the arguments, of which it takes out its own.
void chooseScaleFactors(int argc, char *argv[])
{
    std::vector<QByteArray> texts(argv, argv + argc);
    std::vector<char *> copy(texts.size() + 1);
    std::transform(texts.begin(), texts.end(), copy.begin(), [](QByteArray &text) { return text.data(); });
    int count = argc;
    auto application = std::make_unique<QApplication>(count, copy.data());
    GuiBase::calcScaleFactorEnv(designSize);
    const EmptyFontConfiguration noFonts;
    application.reset();
}

void printProbe()
{
    const QString text = "<Version>" + QCoreApplication::applicationVersion() + "</Version>" + "<Fix>"
        + QString::number(Version::fix) + "</Fix>" + "<Translation>"
        + QCoreApplication::translate("QPlatformTheme", "Close") + "</Translation>";
    std::fprintf(stdout, "%s\n", text.toLocal8Bit().constData());
    std::fflush(stdout);
}

void openStartPage(Window &window, const QString &page)
{
    if (page == "settings")
        window.moveToSettingsPage(true);
    else if (page == "help")
        window.moveToHelpPage();
}

// Of this start's options nothing reaches the other, which only comes to the front.
void raiseRunningInstance(const App &app)
{
    Ipc ipc;
    // The bare id, since no inbox stands behind it.
    ipc.setName(app.id());
    ipc.msgToManager(IpcMsg { { "windowFocus", 1 } });
}

int runWindow(const QCommandLineParser &parser)
{
    Window window;
    QCoreApplication::setAttribute(Qt::AA_Use96Dpi);
    QFont font = QApplication::font();
    font.setStyleStrategy(QFont::PreferAntialias);
    QApplication::setFont(font);
    window.show();
    window.activateWindow();
    Platform::allowOpenGl();

    if (parser.isSet("p")) {
        openStartPage(window, parser.value("p").trimmed());
    } else if (parser.isSet("r")) {
        const ReaderList list = parseReaders(parser.value("r").trimmed());
        window.loadedReaders(list.names, list.error, {});
    } else {
        window.getReadersFromMonitor();
    }
    return QApplication::exec();
}

} // namespace

int main(int argc, char *argv[])
{
    Platform::distrustCurrentFolder();
#ifdef VELMOR_KEEP_OUT_OF_CORE_FILES
    Platform::keepOutOfCoreFiles();
#endif
    cleanseCryptoMemory();
    Platform::usePrivateTempDir("velmor");
    Platform::avoidOpenGl();
    App *app = App::instance();
    app->init(QStringLiteral("Menedżer"), Common::installRoot(), architecture, programId);
    if (!hasArgument(argc, argv, "-t") && qEnvironmentVariableIsEmpty("QT_SCREEN_SCALE_FACTORS"))
        chooseScaleFactors(argc, argv);
    Platform::choosePlatformPlugin();

    QApplication application(argc, argv);
    QCoreApplication::setApplicationVersion(Version::shortText);
    QTranslator translator;
    if (translator.load("qtbase_pl", QLibraryInfo::location(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(&translator);
    QCommandLineParser parser;
    parser.addVersionOption();
    parser.addOption({ "r", "Readers list", "readers" });
    parser.addOption({ "p", "Page settings", "page" });
    parser.addOption({ "t", "Test" });
    parser.process(application);
    if (parser.isSet("t")) {
        printProbe();
        return 0;
    }

    Shared::loadResources();
    readFontConfiguration();
    app->initQApp();
    // The lock is the only check of a running instance.
    if (!app->lock()) {
        raiseRunningInstance(*app);
        return 1;
    }
    return runWindow(parser);
}
