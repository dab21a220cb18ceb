#include "Steps.h"
int showCommands(const Arguments&) { return 1; }
