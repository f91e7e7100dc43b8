#pragma once

#include "system/family_runs.h"

#include <QStandardPaths>

// Stories of a program on a desktop of its own, told in Python by the desktop's own client of the accessibility bus.
class StoryRuns : public FamilyRuns {
public:
    void beginStories()
    {
        for (const char *tool : { "dbus-run-session", "xvfb-run", "xdotool" }) {
            if (QStandardPaths::findExecutable(tool).isEmpty())
                QSKIP(tool);
        }
        if (!hasModules())
            QSKIP("python3-gi or gir1.2-atspi-2.0 is not installed");
    }

    static QString folder() { return QString(VELMOR_TEST_SOURCE_DIR) + "/tests/system/screen_reader/"; }

    static bool hasModules()
    {
        const char *imports = "import gi; gi.require_version('Atspi', '2.0'); from gi.repository import Atspi";
        return QProcess::execute("/usr/bin/python3", { "-c", imports }) == 0;
    }

    // Debian's own interpreter, since the modules are Debian's.
    void runStory(const QString &story) { runStory({ story, program(), "-r", "0:Czytnik Alfa||" }, {}); }
    void runStory(QStringList arguments, const StringMap &ofTheStory)
    {
        QProcess session;
        StringMap variables { { "QT_QPA_PLATFORM", {} }, { "QT_FONT_DPI", {} },   { "QT_ACCESSIBILITY", "1" },
                              { "DISPLAY", {} },         { "LC_ALL", "C.UTF-8" }, { "LOCPATH", {} } };
        for (auto variable = ofTheStory.cbegin(); variable != ofTheStory.cend(); ++variable)
            variables.insert(variable.key(), variable.value());
        session.setProcessEnvironment(environmentWith(variables));
        session.setProcessChannelMode(QProcess::MergedChannels);
        arguments.first().prepend(folder());
        session.start(folder() + "session", QStringList { "/usr/bin/python3", "-B" } + arguments);
        constexpr int storyPatience = 150000;
        if (!session.waitForFinished(storyPatience)) {
            session.kill();
            session.waitForFinished();
        }
        const QByteArray output = session.readAll();
        QVERIFY2(session.exitStatus() == QProcess::NormalExit && session.exitCode() == 0, output.constData());
    }
};
