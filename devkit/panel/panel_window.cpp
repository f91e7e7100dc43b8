#include "panel/panel_window.h"

#include "app/app.h"
#include "gui/gui_base.h"
#include "gui/key_focus.h"
#include "panel/card_words.h"
#include "panel/cards_page.h"
#include "panel/lessons_page.h"
#include "panel/panel_parts.h"
#include "panel/panel_resources.h"
#include "panel/pins_page.h"
#include "panel/reader_page.h"

#include <QAction>
#include <QFile>
#include <QIcon>
#include <QTabBar>
#include <QTabWidget>

namespace {

QString styleSheetOfTheTheme()
{
    loadPanelResources();
    const GuiBase &gui = *GuiBase::instance();
    QFile own(QString(":/panel/%1.css").arg(gui.theme()));
    return own.open(QIODevice::ReadOnly) ? gui.file("styles-window.css") + QString::fromUtf8(own.readAll()) : QString();
}

} // namespace

PanelWindow::PanelWindow() : pages(new QTabWidget), status(PanelParts::label({}, "body", "lStatus"))
{
    setObjectName("panel");
    setWindowTitle("velmor – panel prowadzącego");
    setWindowIcon(QIcon(":/icons/Manager.iconset/Manager.ico"));
    setAttribute(Qt::WA_StyledBackground);
    pages->setObjectName("pages");
    pages->setDocumentMode(true);
    pages->tabBar()->setObjectName("tabs");
    pages->tabBar()->setExpanding(true);
    pages->tabBar()->setDrawBase(false);
    pages->addTab(new CardsPage(world), "Dowody");
    pages->addTab(new PinsPage(world), "Kody");
    pages->addTab(new ReaderPage(world), "Czytnik");
    pages->addTab(new LessonsPage(world, allLessons()), "Lekcje");
    for (int i = 0; i < pages->count(); ++i)
        pages->widget(i)->setContentsMargins(0, PanelParts::gap, 0, 0);

    auto *footer = new QFrame;
    footer->setObjectName("footer");
    auto *line = PanelParts::column(footer, PanelParts::rowGap);
    line->setContentsMargins(PanelParts::gap, PanelParts::rowGap, PanelParts::gap, PanelParts::rowGap);
    line->addWidget(status);
    auto *middle = new QWidget;
    auto *inside = PanelParts::column(middle, PanelParts::gap);
    inside->addWidget(pages);
    auto *layout = PanelParts::column(this, 0, 0);
    layout->addWidget(middle, 1);
    layout->addWidget(footer);

    // As the program does: a widget that is styled before its class is known keeps the looks of one without.
    setStyleSheet(styleSheetOfTheTheme());
    KeyFocus::watch();
    resize(designSize);
    setMinimumSize(designSize);
    connect(&world, &PanelWorld::changed, this, &PanelWindow::tellCard);
    connect(
        &world, &PanelWorld::refused, this,
        [this](const QString &reason) { status->setText("Nie udało się: " + reason); }, Qt::QueuedConnection);
    connect(&world, &PanelWorld::gone, this, &QWidget::close);
    tellCard();
}

void PanelWindow::listen(App &app)
{
    ipc.useLock(app);
    connect(&ipc, &Ipc::received, this, &PanelWindow::receive);
    ipc.start();
}

void PanelWindow::receive(const IpcMsg &message)
{
    if (message.to() != ipc.name())
        return;
    for (const QByteArray &key : message.payloadKeys()) {
        if (key == "close") {
            close();
        } else if (key == "windowFocus") {
            showNormal();
            GuiBase::activate(this);
        }
    }
}

void PanelWindow::tellCard()
{
    const sim::Reader reader = world.reader();
    const auto card = reader.card.empty() ? std::nullopt : world.sim().card(reader.card);
    if (card)
        status->setText(QString("W czytniku: %1").arg(CardWords::holder(*card)));
    else
        status->setText(reader.name.empty() ? QStringLiteral("Nie ma czytnika") : QStringLiteral("Czytnik jest pusty"));
}
