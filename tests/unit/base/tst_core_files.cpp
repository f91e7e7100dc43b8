#include "base/platform.h"

#include "support/testmain.h"

#ifdef Q_OS_WIN
#include <windows.h>
#else
#include <sys/prctl.h>
#endif

// A crash leaves no picture of the memory behind.
class TestCoreFiles : public QObject {
    Q_OBJECT

private slots:
    void processIsKeptOutOfThem()
    {
#ifdef Q_OS_WIN
        const UINT before = SetErrorMode(SEM_FAILCRITICALERRORS);
        Platform::keepOutOfCoreFiles();
        QCOMPARE(GetErrorMode(), UINT(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX));
        SetErrorMode(before);
#else
        QCOMPARE(prctl(PR_GET_DUMPABLE), 1);
        Platform::keepOutOfCoreFiles();
        QCOMPARE(prctl(PR_GET_DUMPABLE), 0);
        // For the tools that look into tests.
        prctl(PR_SET_DUMPABLE, 1);
#endif
    }
};

VELMOR_TEST(TestCoreFiles)
#include "tst_core_files.moc"
