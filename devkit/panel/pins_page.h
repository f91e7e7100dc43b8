#pragma once

#include <QVector>
#include <QWidget>

class PanelWorld;
class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;

// The PINs and the PUK of the card in the chosen reader: what they are, how many tries are left, locking them.
class PinsPage : public QWidget {
    Q_OBJECT

public:
    explicit PinsPage(PanelWorld &panelWorld);

private:
    struct Row {
        std::string container; // empty: the PUK
        QLabel *code;
        QComboBox *tries;
        QPushButton *lock;
    };
    QWidget *makeRows();
    void setTries(const std::string &container, int tries);
    void refresh();

    PanelWorld &world;
    QLabel *holder;
    QVector<Row> rows;
    QCheckBox *show;
    QPushButton *restore;
};
