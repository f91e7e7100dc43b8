#pragma once

#include "spoken/story.h"

#include "support/testmain.h"

// A test function with a row for each story.
class StoryTest {
protected:
    static void addRows(const QVector<Story> &stories)
    {
        QTest::addColumn<Story>("story");
        for (const Story &story : stories)
            QTest::newRow(qPrintable(QString(story.page) + ": " + story.state)) << story;
    }

    void tell(const Happenings &happenings)
    {
        QFETCH(Story, story);
        teller.open(story);
        teller.play(story, happenings);
        for (const QString &fault : teller.faults())
            qCritical().noquote() << fault;
        QVERIFY2(teller.faults().isEmpty(), qPrintable('\n' + teller.faults().join('\n')));
    }

    StoryTeller teller;
};
