#include "window.h"

// The shell itself: moving the frameless window by its header, minimising, the loader that covers the pages while the
// card works, and quitting. Quitting asks the worker thread to end at 0, 500 and 1000 ms and terminates it from the
// fourth attempt on, since a library that waits for the pinpad cannot be asked.

#include "base/common.h"
#include "gui/anim_widget.h"
#include "gui/popup.h"
#include "gui/spoken_focus.h"
#include "ui_window.h"

#include <QApplication>
#include <QDebug>
#include <QMouseEvent>
#include <QScreen>
#include <QStyle>
#include <QTimer>
#include <QWindow>

#include <chrono>
#include <optional>

namespace {

constexpr std::chrono::milliseconds stopInterval { 500 };
constexpr std::chrono::seconds destructorInterval { 1 };
constexpr int politeAttempts = 3;
constexpr int loaderHeight = 547;

} // namespace

void Window::mousePressEvent(QMouseEvent *event)
{
    drag.dragPos = event->pos();
    if (event->button() == Qt::LeftButton)
        drag.dragging = true;
}

void Window::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        drag.dragging = false;
}

void Window::mouseMoveEvent(QMouseEvent *event)
{
    Q_UNUSED(event)
    if (drag.moves(size(), ui->mainFrame->size()))
        windowHandle()->startSystemMove();
}

bool Window::event(QEvent *event)
{
    // Consumes every change of the window state, so that restoring leaves the window where it stood; changeEvent below
    // therefore stays idle. Both are meant.
    if (event->type() == QEvent::WindowStateChange) {
        if (windowState() != Qt::WindowNoState)
            return true;
        qDebug().noquote() << "Unminimalize()";
        return true;
    }
    return QWidget::event(event); // NOLINT(bugprone-parent-virtual-call): past the main window's own, which is meant
}

void Window::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::WindowStateChange && isMinimized()) {
        const QRect available = QApplication::screens().first()->availableGeometry();
        setGeometry(QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, size(), available));
    }
    QMainWindow::changeEvent(event);
}

void Window::minimizeClicked()
{
    qDebug().noquote() << "minimizeClicked()";
    showMinimized();
}

void Window::showWndw()
{
    activateWindow();
    showNormal();
    qDebug().noquote() << "Show window called";
}

void Window::loaderShow(const QString &title, const QString &unused, bool unusedFlag, bool keepReaders)
{
    Q_UNUSED(unused)
    Q_UNUSED(unusedFlag)
    qDebug().noquote() << "loader show, title: " << title;
    busyFlag = true;
    // What was told of it the last time is not told again.
    std::optional<FocusPause> pause(std::in_place);
    ui->pager->hide();
    loader->start();
    ui->loading->setFixedHeight(loaderHeight);
    if (isPage(ui->pageHome)) {
        if (keepReaders)
            ui->cbReaders->setEnabled(false);
        ui->cbReaders->setVisible(keepReaders);
        ui->lReaderDesc->setVisible(keepReaders);
    }
    if (isPage(ui->pageCertInfo)) {
        ui->cbReaders->hide();
        ui->lReaderDesc->hide();
    }
    ui->bWroc->hide();
    ui->loading->show();
    ui->loadingDesc->setText(title);
    ui->loadingDesc->setAccessibleName(Common::plainText(title));
    pause.reset();
    focusAloud(ui->loadingDesc);
}

void Window::loaderHide()
{
    ui->pager->show();
    ui->bSettings->setEnabled(true);
    ui->bHelp->setEnabled(true);
    qDebug().noquote() << "loader hide";
    updateHomeCards();
    ui->cbReaders->show();
    ui->lReaderDesc->show();
    if (isPage(ui->pageCertInfo)) {
        ui->bWroc->show();
        ui->cbReaders->setEnabled(false);
    }
    if (isPage(ui->pageHome) || isPage(ui->pageNoElectricLayer)) {
        enableReadersOnlyWithChoice();
        ui->cbReaders->show();
    }
    loader->stop();
    if (ui->loadingDesc->hasFocus())
        leaveFocus(this);
    ui->loading->hide();
    busyFlag = false;
}

void Window::quitClicked()
{
    qDebug().noquote() << "quitClicked";
    if (isPinPage() && card.pinPad) {
        // A worker that waits for the pinpad must not be terminated by impatience.
        Popup::runModal(Popup::Warning, this, "Zamykanie aplikacji",
                        "<br/><nobr>Zakończ najpierw operację na czytniku z pinpadem.</nobr><br/>", QSize(),
                        QDialogButtonBox::Close);
        return;
    }
    loaderShow("Zamykanie aplikacji", isReader() ? "Zdejmij karte z czytnika" : "");
    closeWithTheards();
}

void Window::closeWithTheards()
{
    emit closePopups();
    if (workerThread.isRunning()) {
        tryCloseTheards();
        QTimer::singleShot(stopInterval, this, &Window::closeWithTheards);
    } else {
        QWidget::close();
    }
}

void Window::tryCloseTheards()
{
    if (!workerThread.isRunning())
        return;
    if (closeAttempts++ < politeAttempts) {
        qDebug().noquote() << "closeTheards()";
        workerThread.quit();
        return;
    }
    stuckGuard.arm();
    qDebug().noquote() << "terminateTheards()";
    workerThread.terminate();
}

void Window::closeTheards()
{
    while (workerThread.isRunning()) {
        tryCloseTheards();
        QThread::sleep(destructorInterval.count());
    }
    qDebug().noquote() << "threads closed";
}
