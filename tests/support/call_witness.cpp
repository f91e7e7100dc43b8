// Loaded into a process before the toolkit (LD_PRELOAD), this library tells what the program asks of the toolkit and
// shows nobody: a line a call in the file that VELMOR_WITNESS names. Where the event loop would begin the process ends.
// With VELMOR_WITNESS_WITHOUT_TLS the toolkit finds no library for it; with VELMOR_WITNESS_THREADS each thread that is
// made is a line too.

#include <QApplication>
#include <QFont>
#include <QResource>
#include <QSslSocket>
#include <QWidget>

#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <fontconfig/fontconfig.h>
#include <pthread.h>
#include <unistd.h>

namespace {

void tell(const char *line)
{
    if (std::FILE *file = std::fopen(std::getenv("VELMOR_WITNESS"), "a")) {
        std::fprintf(file, "%s\n", line);
        std::fclose(file);
    }
}

} // namespace

// The definitions below stand before those of the toolkit.

bool QResource::registerResource(const uchar *data, const QString &root)
{
    tell("resources");
    using Real = bool (*)(const uchar *, const QString &);
    return reinterpret_cast<Real>(dlsym(RTLD_NEXT, "_ZN9QResource16registerResourceEPKhRK7QString"))(data, root);
}

void QWidget::activateWindow()
{
    tell(isVisible() ? "activated when shown" : "activated");
    if (qgetenv("QT_XCB_GL_INTEGRATION") == "none")
        tell("without OpenGL");
    using Real = void (*)(QWidget *);
    reinterpret_cast<Real>(dlsym(RTLD_NEXT, "_ZN7QWidget14activateWindowEv"))(this);
}

bool QSslSocket::supportsSsl()
{
    if (std::getenv("VELMOR_WITNESS_WITHOUT_TLS"))
        return false;
    return reinterpret_cast<bool (*)()>(dlsym(RTLD_NEXT, "_ZN10QSslSocket11supportsSslEv"))();
}

// Inside of itself the library does not come by here.
extern "C" Q_DECL_EXPORT FcBool FcConfigParseAndLoad(FcConfig *config, const FcChar8 *file, FcBool complain)
{
    tell("font configuration");
    using Real = FcBool (*)(FcConfig *, const FcChar8 *, FcBool);
    return reinterpret_cast<Real>(dlsym(RTLD_NEXT, "FcConfigParseAndLoad"))(config, file, complain);
}

extern "C" int pthread_create(pthread_t *thread, const pthread_attr_t *attributes, void *(*start)(void *),
                              void *argument)
{
    if (std::getenv("VELMOR_WITNESS_THREADS"))
        tell("thread");
    using Real = int (*)(pthread_t *, const pthread_attr_t *, void *(*)(void *), void *);
    return reinterpret_cast<Real>(dlsym(RTLD_NEXT, "pthread_create"))(thread, attributes, start, argument);
}

int QApplication::exec()
{
    if (QCoreApplication::testAttribute(Qt::AA_Use96Dpi))
        tell("96 dots per inch");
    if (QApplication::font().styleStrategy() == QFont::PreferAntialias)
        tell("smooth font");
    if (!qEnvironmentVariableIsSet("QT_XCB_GL_INTEGRATION"))
        tell("OpenGL for others");
    tell("event loop");
    // Its first turn, in which the window looks for the TLS library.
    QCoreApplication::processEvents();
    _exit(0);
}
