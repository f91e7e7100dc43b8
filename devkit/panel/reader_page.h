#pragma once

#include <QWidget>

#include "simworld/world_types.h"

#include <functional>

class PanelWorld;
class QCheckBox;
class QComboBox;
class QFrame;
class QLabel;
class QLineEdit;
class QPushButton;
class QRegularExpressionValidator;

// The chosen reader: its keypad with the answers of whoever sits before it, and how fast its card is.
class ReaderPage : public QWidget {
    Q_OBJECT

public:
    explicit ReaderPage(PanelWorld &panelWorld);

private:
    QWidget *makeReader();
    QWidget *makeKeypad();
    QWidget *makeSpeed();
    QPushButton *answer(const QString &text, const QString &name, const std::function<bool()> &work);
    std::string container() const;
    // Of the card in the reader; as made if there is none.
    sim::PinState pin() const;
    std::string puk() const;
    // Digits that are neither the PIN nor the PUK.
    std::string wrongCode() const;
    void proposeNewPin();
    void refresh();
    void refreshReaders();
    void refreshSpeed();
    void refreshKeypad();

    PanelWorld &world;
    QComboBox *reader;
    QCheckBox *pinpad;
    QComboBox *speed;
    QFrame *keypad;
    QLabel *waits;
    QComboBox *containers;
    QLineEdit *newPin;
    QRegularExpressionValidator *digits;
    QVector<QPushButton *> answers; // that give a new PIN
    QPushButton *forget;
};
