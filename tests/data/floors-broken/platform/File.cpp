#include "platform/File.h"

#include "File.h"
#include "platform/Missing.h"
