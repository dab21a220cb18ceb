// What this program shows, one file each. They use the library's inner facilities, which are not
// exported: the program is linked with the library's sources.
#pragma once

#include <string>
#include <vector>

using Arguments = std::vector<std::string>;

// Each prints what it does and returns the program's exit code: 0, or 1 after saying why not.
int showLogging(const Arguments& arguments);
int showRegistry(const Arguments& arguments);
int showCommands(const Arguments& arguments);
