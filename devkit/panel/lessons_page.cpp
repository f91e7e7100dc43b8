#include "panel/lessons_page.h"

#include "panel/panel_parts.h"
#include "panel/panel_world.h"
#include "panel/spoken_list.h"

#include <QTextBrowser>

LessonsPage::LessonsPage(PanelWorld &panelWorld, const QVector<Lesson> &theLessons) :
    world(panelWorld), lessons(theLessons), list(new SpokenList), title(PanelParts::heading({}, "lLesson")),
    sheet(new QTextBrowser)
{
    setObjectName("pageLessons");
    list->setObjectName("listLessons");
    list->setAccessibleName("Lekcje");
    list->setProperty("class", "lessons");
    list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    sheet->setObjectName("textLesson");
    sheet->setTabChangesFocus(true);
    for (const Lesson &lesson : qAsConst(lessons))
        list->addItem(lesson.title);
    auto *prepare = PanelParts::button("Przygotuj tę lekcję", "bPrepare", "primary");
    prepare->setAccessibleDescription("zaczyna od nowa z jednym czytnikiem i dowodem tej lekcji");

    auto *layout = PanelParts::column(this);
    layout->addWidget(list);
    auto *card = PanelParts::card();
    auto *inside = PanelParts::column(card, PanelParts::gap, PanelParts::rowGap);
    inside->addWidget(title);
    inside->addWidget(sheet, 1);
    inside->addWidget(prepare);
    layout->addWidget(card, 1);
    connect(list, &QListWidget::currentRowChanged, this, &LessonsPage::showSheet);
    connect(prepare, &QPushButton::clicked, this, [this] {
        world.tell(world.sim().applyScenario(lessons.value(list->currentRow()).scenario.toStdString()));
    });
    list->setCurrentRow(0);
}

void LessonsPage::showEvent(QShowEvent *event)
{
    const int around = list->height() - list->viewport()->height();
    list->setFixedHeight(list->count() * list->sizeHintForRow(0) + around);
    QWidget::showEvent(event);
}

void LessonsPage::showSheet(int index)
{
    const Lesson lesson = lessons.value(index);
    title->setText(lesson.title);
    sheet->setAccessibleName(lesson.title);
    QString text;
    for (const QString &paragraph : lesson.paragraphs)
        text += QString("<p style=\"margin-top: 0; margin-bottom: 10px;\">%1</p>").arg(paragraph.toHtmlEscaped());
    sheet->setHtml(text);
}
