#pragma once

#include <QObject>

class QWidget;

// Gives frames a hover state that style rules can ask for, as the property `MouseOver`, and turns a double click on a
// frame into a click on the first push button inside it that has "Arrow" in its name. As an event filter it swallows
// every event of the frame, paint and single clicks included: what a frame shows comes from its children alone.
class HoverParameter : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    // Sets the property on the widget and on all widgets inside it, and styles them anew. False for a null widget.
    static bool setHover(QWidget *widget, bool on);
    static bool clear(QWidget *widget);

    bool eventFilter(QObject *watched, QEvent *event) override;

signals:
    void moveToPage();
};
