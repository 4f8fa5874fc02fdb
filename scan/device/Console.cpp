#include "scan/device/Console.h"
#include <unistd.h>

bool Console::stderrIsTerminal()
{
    return ::isatty(STDERR_FILENO) == 1;
}
