#pragma once

#include <QObject>

class QLabel;

// For labels that are one link: reached by Tab, the link itself has the focus, so that Enter opens it at once. Without
// it the label would be a stop of its own, at which Enter does nothing.
class LinkFocus : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    void watch(QLabel *label);

protected:
    bool eventFilter(QObject *object, QEvent *event) override;
};
