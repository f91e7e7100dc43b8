#include "gui/font_configuration.h"

EmptyFontConfiguration::EmptyFontConfiguration() = default;

EmptyFontConfiguration::~EmptyFontConfiguration() = default;

void readFontConfiguration() { }
