// Must not compile: the text of an entry is a format, and the compiler compares it with the arguments.
#include "Classes/Mode/Log/Log.h"

void wrong()
{
    logSave("%s", 1);
    logDebug("%s", 2);
    logError("%s", 3);
    logWarn("%s", 4);
}
