#pragma once

#include "support/testmain.h"

#include "app/app.h"
#include "panel/panel_window.h"
#include "shared.h"
#include "simworld/world_store.h"

#include <QProcess>
#include <QTabWidget>

#include <memory>

// The trainer's window on a world of its own, and a second world on which velmor-sim does what the trainer has clicked.
class PanelFixture {
public:
    enum Page { Cards, Pins, ReaderAndKeypad, Lessons };

    sim::SimWorld world;
    std::unique_ptr<PanelWindow> window;

    // Once a process.
    static void loadLook()
    {
        App::instance()->init("Panel", VELMOR_TEST_ROOT, "x86_64", "Panel");
        Shared::loadResources();
        App::instance()->initQApp();
    }

    // Both worlds by this scenario, and the window on one of its pages.
    void begin(const QString &scenario, Page page)
    {
        window.reset();
        QVERIFY2(world.applyScenario("reset\n" + scenario.toStdString()), world.error().c_str());
        sim::SimWorld tool = other();
        QVERIFY2(tool.applyScenario("reset\n" + scenario.toStdString()), tool.error().c_str());
        open(page);
    }
    void open(Page page)
    {
        window = std::make_unique<PanelWindow>();
        find<QTabWidget>("pages")->setCurrentIndex(page);
        window->show();
        window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
    }

    template <typename Widget = QWidget>
    Widget *find(const QString &name) const
    {
        auto *widget = window->findChild<Widget *>(name);
        if (!widget)
            qFatal("the panel has no %s", qPrintable(name));
        return widget;
    }
    void click(const QString &button) const { QTest::mouseClick(find(button), Qt::LeftButton); }

    // One command of velmor-sim on the other world.
    static void tool(const QStringList &words)
    {
        QProcess process;
        process.start(program(), QStringList { "--world", otherFolder() } + words);
        QVERIFY(process.waitForFinished(20000));
        QVERIFY2(process.exitCode() == 0, process.readAllStandardError());
    }

    // Whole worlds as texts; how often each was changed is left out.
    QString ours() const { return textOf(world.directory()); }
    static QString theirs() { return textOf(otherFolder().toStdString()); }

private:
    static QString otherFolder() { return TestHome::path() + "/other-world"; }
    static sim::SimWorld other() { return sim::SimWorld(otherFolder().toStdString()); }
    static QString program()
    {
#ifdef Q_OS_WIN
        return QStringLiteral(VELMOR_TEST_ROOT "/devkit/velmor-sim.exe");
#else
        return QStringLiteral(VELMOR_TEST_ROOT "/devkit/velmor-sim");
#endif
    }
    static QString textOf(const std::string &folder)
    {
        std::string error;
        const auto read = sim::WorldStore(folder).read(error);
        if (!read)
            qFatal("%s", error.c_str());
        sim::World plain = *read;
        plain.generation = 0;
        plain.lastEvent = 0;
        return QString::fromStdString(sim::worldToText(plain));
    }
};
