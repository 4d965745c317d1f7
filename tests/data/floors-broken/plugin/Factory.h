#pragma once

#include "host/Book.h"
#include "linklist/PrivateView.h"
#include "plugin/PluginSettingsInterface.h"
