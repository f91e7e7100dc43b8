#pragma once

#include <QtTest>

#include <QApplication>
#include <QStringList>

#include <memory>

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

// The tests of one folder are one program; its first argument chooses the class that runs, by the name of its file
// without the extension. So each class still has a process of its own: singletons, TMPDIR and XDG folders are fresh.
class TestCase {
public:
    using Make = std::unique_ptr<QObject> (*)();

    TestCase(const char *sourceFile, Make makeTest);

    // Null if the program has no such test.
    static std::unique_ptr<QObject> make(const QByteArray &name);
    static QByteArrayList names();
};

// A class that needs something before the application exists, or is its own child process, has a main instead and is a
// program by itself.
#define VELMOR_TEST(TestClass)                                                                                         \
    static const TestCase testCaseOf##TestClass(                                                                       \
        __FILE__, []() -> std::unique_ptr<QObject> { return std::make_unique<TestClass>(); });
