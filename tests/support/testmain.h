#pragma once

#include <QtTest>

#include <QApplication>
#include <QStringList>

// Gives a test program a home, XDG folders and a TMPDIR of its own before anything reads them, so that tests that run
// side by side never share settings, logs, shared-memory keys or worlds. The folder goes when the object does.
class TestHome {
public:
    TestHome();
    ~TestHome();
    TestHome(const TestHome &) = delete;
    TestHome &operator=(const TestHome &) = delete;

    static QString path();

    // Clears away what a test has left in the user's folder. On Windows that is the account's own, which no variable
    // moves: there only browsers' profiles go, and only from an account that was made for the tests.
    static void empty();

private:
    QTemporaryDir *folder;
};

// Collects what is logged while it lives, as the plain message texts, and passes each on to the handler that stood
// before it.
class LogCatcher {
public:
    LogCatcher();
    ~LogCatcher();
    LogCatcher(const LogCatcher &) = delete;
    LogCatcher &operator=(const LogCatcher &) = delete;

    QStringList lines() const;
    QString text() const { return lines().join('\n'); }
    bool has(const QString &part) const;
    int count(const QString &part) const;
    void clear();

    // For the message handler.
    static void add(const QString &message);

private:
    QStringList caught;
};

#define VELMOR_TEST_MAIN(TestClass)                                                                                    \
    int main(int argc, char *argv[])                                                                                   \
    {                                                                                                                  \
        TestHome home;                                                                                                 \
        QApplication application(argc, argv);                                                                          \
        TestClass test;                                                                                                \
        return QTest::qExec(&test, argc, argv);                                                                        \
    }
