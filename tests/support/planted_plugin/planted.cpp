#include <QImageIOPlugin>

#include <cstdio>
#include <cstdlib>

#ifdef Q_OS_WIN
#include <windows.h>
#endif

// A plugin of the toolkit that somebody has laid where the program must not look. That it was loaded stands in the file
// that the environment names; on Windows also whether the process finds a DLL of the current folder by its name alone.
class PlantedPlugin : public QImageIOPlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QImageIOHandlerFactoryInterface_iid FILE "planted.json")

public:
    Capabilities capabilities(QIODevice *, const QByteArray &) const override { return {}; }
    QImageIOHandler *create(QIODevice *, const QByteArray &) const override { return nullptr; }
};

namespace {

const struct Trace {
    Trace()
    {
        const char *path = std::getenv("VELMOR_TEST_PLANTED");
        std::FILE *file = path ? std::fopen(path, "w") : nullptr;
        if (!file)
            return;
#ifdef Q_OS_WIN
        const bool found = LoadLibraryExW(L"planted_probe.dll", nullptr, 0) != nullptr;
        std::fputs(found ? "current folder trusted" : "current folder distrusted", file);
#endif
        std::fclose(file);
    }
} trace;

} // namespace

#include "planted.moc"
