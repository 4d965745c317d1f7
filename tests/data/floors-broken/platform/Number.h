#pragma once

#include "text/ColorCategory.h"
