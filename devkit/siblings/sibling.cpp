#include "siblings/sibling.h"

#include "app/app.h"
#include "app/app_paths.h"
#include "base/common.h"
#include "base/platform.h"

#include <QFileInfo>

namespace {

constexpr char architecture[] = "x86_64";

// Not where it is for Manager: on some systems the siblings stand in the root itself.
QString installRoot()
{
    const QString folder = QFileInfo(QString(Platform::executablePath()).replace('\\', '/')).path();
    const QString below = QString(AppPaths::of(Platform::word()).programs).replace("%1", AppPaths::bits(architecture));
    return below == "/" ? folder : Common::chopSuffix(folder, below);
}

} // namespace

void Sibling::setUp(const QString &displayName, const QByteArray &id)
{
    Platform::distrustCurrentFolder();
    Platform::usePrivateTempDir("velmor");
    App::instance()->init(displayName, installRoot(), architecture, id);
}
