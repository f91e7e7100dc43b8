#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

// A lesson is a scenario file: its first comment is the title, each further one a paragraph of what to show, and its
// commands set up the world. velmor-sim can run it as well.
struct Lesson {
    QString title;
    QStringList paragraphs;
    QString scenario; // the whole text
};

Lesson lessonOf(const QString &scenario);

// Those that are compiled in, in their order.
QVector<Lesson> allLessons();
