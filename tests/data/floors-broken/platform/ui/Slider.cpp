#include "platform/ui/Slider.h"

#include <plugin/Factory.h>
