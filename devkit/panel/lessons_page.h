#pragma once

#include "panel/lesson.h"

#include <QWidget>

class PanelWorld;
class QLabel;
class QListWidget;
class QTextBrowser;

// A sheet for each lesson: what to show, and a button that sets up the world for it.
class LessonsPage : public QWidget {
    Q_OBJECT

public:
    explicit LessonsPage(PanelWorld &panelWorld, const QVector<Lesson> &theLessons);

protected:
    // As high as its lessons, which is known once it is styled.
    void showEvent(QShowEvent *event) override;

private:
    void showSheet(int index);

    PanelWorld &world;
    QVector<Lesson> lessons;
    QListWidget *list;
    QLabel *title;
    QTextBrowser *sheet;
};
