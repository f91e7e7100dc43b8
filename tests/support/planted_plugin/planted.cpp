#include <QImageIOPlugin>

#include <cstdio>
#include <cstdlib>

// A plugin of the toolkit that somebody has laid where the program must not look. That it was loaded stands in the file
// that the environment names.
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
        if (std::FILE *file = path ? std::fopen(path, "w") : nullptr)
            std::fclose(file);
    }
} trace;

} // namespace

#include "planted.moc"
