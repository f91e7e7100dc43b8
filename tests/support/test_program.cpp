#include "support/testmain.h"

#include <cstdio>

// PROGRAM TEST [ARGUMENT OF QTTEST ...]
int main(int argc, char *argv[])
{
    TestHome home;
    QApplication application(argc, argv);
    QStringList arguments = QCoreApplication::arguments();
    const QByteArray name = arguments.size() > 1 ? arguments.takeAt(1).toLatin1() : QByteArray();
    const std::unique_ptr<QObject> test = TestCase::make(name);
    if (!test) {
        std::fprintf(stderr, "no test '%s' here, only: %s\n", name.constData(),
                     TestCase::names().join(", ").constData());
        return 2;
    }
    return QTest::qExec(test.get(), arguments);
}
