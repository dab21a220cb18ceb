#include "Steps.h"
int showRegistry(const Arguments&) { return 1; }
