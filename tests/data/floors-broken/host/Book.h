#pragma once

#include "plugin/PluginSettingsInterface.h"
