#include "Steps.h"
int showLogging(const Arguments&) { return 1; }
