#include "gui/font_configuration.h"

#include <fontconfig/fontconfig.h>

namespace {

// The configuration of this process from now on; the library holds a share of its own.
void useAndLetGo(FcConfig *config)
{
    FcConfigSetCurrent(config);
    FcConfigDestroy(config);
}

// Without one, the library chooses one itself, and only while it reads.
bool hasCacheFolder(FcConfig *config)
{
    FcStrList *folders = FcConfigGetCacheDirs(config);
    const bool has = FcStrListNext(folders) != nullptr;
    FcStrListDone(folders);
    return has;
}

} // namespace

// FONTCONFIG_FILE with the name of an empty file would not do: the templates are read beside any file.
EmptyFontConfiguration::EmptyFontConfiguration()
{
    useAndLetGo(FcConfigCreate());
}

EmptyFontConfiguration::~EmptyFontConfiguration()
{
    // Where the toolkit has not let go, as on a platform that has no use for it.
    FcConfigSetCurrent(nullptr);
}

void readFontConfiguration()
{
    FcConfig *config = FcConfigCreate();
    if (FcConfigParseAndLoad(config, nullptr, FcTrue) && hasCacheFolder(config))
        useAndLetGo(config);
    else
        FcConfigDestroy(config);
}
