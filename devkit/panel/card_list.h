#pragma once

#include "panel/spoken_list.h"

#include <QColor>

// The list of cards: portrait, holder, words on the state, a bar beside the one that is in a reader. Click, Return and
// the space bar say that the card is to go in or out.
class CardList : public SpokenList {
    Q_OBJECT
    // Colours of what the items draw; they come from the style sheet.
    Q_PROPERTY(QColor textColour MEMBER textColour)
    Q_PROPERTY(QColor secondaryColour MEMBER secondaryColour)
    Q_PROPERTY(QColor lineColour MEMBER lineColour)
    Q_PROPERTY(QColor groundColour MEMBER groundColour)
    Q_PROPERTY(QColor insertedColour MEMBER insertedColour)
    Q_PROPERTY(QColor focusColour MEMBER focusColour)

public:
    enum Role { Name = Qt::UserRole, Holder, State, Inserted };

    explicit CardList(QWidget *parent = nullptr);

    void addCard(const QString &name, const QString &holder, const QImage &portrait);
    void setState(QListWidgetItem *item, const QString &words, bool inserted);

    QColor textColour, secondaryColour, lineColour, groundColour, insertedColour, focusColour;

signals:
    void toggled(const QString &name);

protected:
    void keyPressEvent(QKeyEvent *event) override;
};
