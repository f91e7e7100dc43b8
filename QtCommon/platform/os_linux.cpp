#include "platform/os_linux.h"

#include "base/common.h"
#include "base/own_environment.h"
#include "platform/temporary_certificate.h"

#include <QDebug>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>

#include <algorithm>
#include <chrono>
#include <fcntl.h>
#include <unistd.h>
#include <vector>

namespace {

// In this time a viewer that cannot show its window has given up.
constexpr std::chrono::milliseconds settlingTime { 500 };

struct Viewer {
    const char *program;
    bool handsOver; // starts another program and ends
};
constexpr Viewer viewers[] = {
    { "gcr-viewer", false },
    { "gcr-viewer-gtk4", false },
    { "xdg-open", true },
};

struct StartedViewer {
    QProcess *process;
    bool handsOver;
    QElapsedTimer age;

    bool isRunning() const { return process->state() != QProcess::NotRunning; }
    bool hasHandedOver() const
    {
        return handsOver && !isRunning() && process->error() != QProcess::FailedToStart
            && process->exitStatus() == QProcess::NormalExit && process->exitCode() == 0;
    }
    bool isOpen() const { return isRunning() ? age.elapsed() >= settlingTime.count() : hasHandedOver(); }
};

// The processes of those that run are never deleted: a viewer outlives the program that started it.
std::vector<StartedViewer> startedViewers;

void forgetClosedViewers()
{
    const auto closed = [](const StartedViewer &viewer) { return !viewer.isRunning() && !viewer.hasHandedOver(); };
    const auto end = std::partition(startedViewers.begin(), startedViewers.end(), std::not_fn(closed));
    std::for_each(end, startedViewers.end(), [](const StartedViewer &viewer) { delete viewer.process; });
    startedViewers.erase(end, startedViewers.end());
}

void startViewer(const QString &program, const QString &path, bool handsOver)
{
    auto *process = new QProcess;
    process->setProcessEnvironment(OwnEnvironment::forChild(OwnEnvironment::Child::Stranger));
    // A pipe of ours would end the viewer with us.
    process->setStandardInputFile(QProcess::nullDevice());
    process->setStandardOutputFile(QProcess::nullDevice());
    process->setStandardErrorFile(QProcess::nullDevice());
    startedViewers.push_back({ process, handsOver, {} });
    startedViewers.back().age.start();
    process->start(program, { path });
}

// For its user alone from the start, and never through a link that someone else has laid.
bool createPrivateFile(const QString &path)
{
    const int descriptor =
        open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (descriptor < 0)
        return false;
    close(descriptor);
    return true;
}

} // namespace

bool OsLinux::certOpen(const QByteArray &der)
{
    if (der.isNull())
        return false;
    const QString path = TemporaryCertificate::path();
    TemporaryCertificate::removeFile();
    if (!createPrivateFile(path) || !writeFileBytes(path, der))
        return false;
    for (const Viewer &viewer : viewers) {
        const QString program = QStandardPaths::findExecutable(viewer.program);
        if (program.isEmpty())
            continue;
        qDebug().noquote() << "start" << program << path;
        startViewer(program, path, viewer.handsOver);
        return true;
    }
    qDebug().noquote() << "no viewer for certificates";
    return false;
}

int OsLinux::certWindowCount()
{
    forgetClosedViewers();
    return static_cast<int>(std::count_if(startedViewers.cbegin(), startedViewers.cend(),
                                          [](const StartedViewer &viewer) { return viewer.isOpen(); }));
}
