#include "panel/lesson.h"

#include "panel/panel_resources.h"

#include <QDir>
#include <QFile>

Lesson lessonOf(const QString &scenario)
{
    Lesson lesson;
    lesson.scenario = scenario;
    for (const QString &line : scenario.split('\n')) {
        if (!line.startsWith('#'))
            continue;
        const QString text = line.mid(1).trimmed();
        if (lesson.title.isEmpty())
            lesson.title = text;
        else if (!text.isEmpty())
            lesson.paragraphs << text;
    }
    return lesson;
}

QVector<Lesson> allLessons()
{
    loadPanelResources();
    QVector<Lesson> lessons;
    const QDir folder(":/panel/lessons");
    for (const QString &name : folder.entryList({ "*.sim" }, QDir::Files, QDir::Name)) {
        QFile file(folder.filePath(name));
        if (file.open(QIODevice::ReadOnly))
            lessons << lessonOf(QString::fromUtf8(file.readAll()));
    }
    return lessons;
}
