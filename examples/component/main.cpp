#include <exception>
#include <iostream>
#include <string>

#include "Steps.h"

namespace {

struct Step {
    const char* name;
    const char* arguments;
    const char* help;
    int (*show)(const Arguments&);
};

constexpr Step kSteps[] = {
    {"logging", "[LOGFILE]",
     "Logs before and after a plug-in with sinks is loaded. Messages of a channel that was "
     "created\n"
     "before stay in a cache of 101; those of a later one appear on the console and in LOGFILE\n"
     "(component.log).",
     showLogging},
    {"registry", "[KEY [VALUE...]]",
     "Prints the tree of HKEY_CURRENT_USER\\KEY (Environment) in the Windows registry, with the\n"
     "VALUEs that its keys have (TEMP, TMP). Then makes a small tree of its own below\n"
     "HKEY_CURRENT_USER\\Software, prints it and deletes it.",
     showRegistry},
    {"commands", "[COMMAND...]",
     "Runs each COMMAND through cmd.exe and shows what it wrote to its standard output.",
     showCommands},
};

void printHelp(std::ostream& out) {
    out << "Shows what the library's own components use.\n";
    for (const Step& step : kSteps) {
        out << "\ncomponent " << step.name << ' ' << step.arguments << '\n' << step.help << '\n';
    }
}

}  // namespace

int main(int argc, char** argv) {
    const std::string name = argc > 1 ? argv[1] : "";
    try {
        for (const Step& step : kSteps) {
            if (name == step.name) {
                return step.show(Arguments(argv + 2, argv + argc));
            }
        }
    } catch (const std::exception& error) {
        std::cerr << "component: " << error.what() << '\n';
        return 1;
    }
    const bool isAsked = name == "--help";
    printHelp(isAsked ? std::cout : std::cerr);
    return isAsked ? 0 : 2;
}
