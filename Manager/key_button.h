#pragma once

#include <QPushButton>
#include <QStyle>

// A button with a key before its word. The program puts seven blanks before the word, which leave the room for the key;
// the two together stand in the middle, and as far apart whatever the word is.
class KeyButton : public QPushButton {
    Q_OBJECT
    // Path of the key's picture among the resources, with "%1" for its state; set by the style sheet.
    Q_PROPERTY(QString pictures MEMBER pictures)

public:
    using QPushButton::QPushButton;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString pictureFor(QStyle::State state) const;

    QString pictures;
};
