#pragma once

#include <QDesktopServices>
#include <QList>
#include <QObject>
#include <QProcessEnvironment>
#include <QUrl>

// While it lives, addresses of one scheme ("https") come here and no program of the desktop opens them.
class OpenedUrls : public QObject {
    Q_OBJECT

public:
    explicit OpenedUrls(const QString &scheme) : ownScheme(scheme)
    {
        QDesktopServices::setUrlHandler(ownScheme, this, "take");
    }
    ~OpenedUrls() override { QDesktopServices::unsetUrlHandler(ownScheme); }

    QList<QUrl> urls;
    QProcessEnvironment environment; // that a program for the last of them would have got

public slots:
    void take(const QUrl &url)
    {
        urls << url;
        environment = QProcessEnvironment::systemEnvironment();
        emit taken();
    }

signals:
    void taken();

private:
    QString ownScheme;
};
