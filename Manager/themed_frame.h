#pragma once

#include <QFrame>

// The frame of the window: it has the theme's style sheet before it has children. One that comes to the finished form
// is worked out for whatever has been laid out by then, and that is laid out anew.
class ThemedFrame : public QFrame {
    Q_OBJECT

public:
    explicit ThemedFrame(QWidget *parent = nullptr);
};
