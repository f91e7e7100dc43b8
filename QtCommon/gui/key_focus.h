#pragma once

#include <QObject>

class QWidget;

// Tells style sheets, by the property `KeyFocus`, which text has the focus and may show it. Text takes the focus only
// for the screen reader's sake, so it shows a ring to who moves by Tab and Shift+Tab, and none to who works with the
// mouse. Buttons, boxes, fields and the report are no text: they show theirs whatever has brought it.
class KeyFocus : public QObject {
    Q_OBJECT

public:
    // From now on, for all windows of the application; further calls do nothing.
    static void watch();

protected:
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    using QObject::QObject;

    bool tabbed = false; // since the mouse was last pressed
};
