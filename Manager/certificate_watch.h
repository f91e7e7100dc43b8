#pragma once

#include <QPointer>
#include <QWidget>

// Watches for the system's certificate window by the number of such windows: it has come when there are more than when
// the click came. A window that is closed meanwhile lowers the mark, so the wanted one still shows. A count that failed
// is -1: it is below the mark and does not lower it.
class CertificateWatch {
public:
    // The page and the button that ask; they are kept for the caller.
    void begin(int windowCount, int page = 0, QWidget *button = nullptr);
    int page() const { return pageOfClick; }
    QWidget *button() const { return clicked; } // null when it has gone
    bool hasCome(int windowCount);
    // Whether there is one more try; asking uses it up.
    bool mayTryAgain();

private:
    int mark = 0;
    int polls = 0;
    int pageOfClick = 0;
    QPointer<QWidget> clicked;
};
