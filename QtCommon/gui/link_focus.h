#pragma once

#include <QObject>

class QLabel;
class QWidget;

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

// For texts with links in them: each link that Tab or Shift+Tab reaches is told to a screen reader, in a browser as
// what is selected, in a label as its description. By itself the toolkit marks it and says nothing.
class LinkSpeech : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    void watch(QWidget *text);

protected:
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    static void tellLink(QWidget *text);
};
