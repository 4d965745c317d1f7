#pragma once

#include "platform/File.h"

#include <QString>
