#include "host/Book.h"
#include "platform/File.h"
#include "plugin/Factory.h"
#include "tests/support/Fixtures.h"
