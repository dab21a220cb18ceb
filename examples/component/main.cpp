#include <exception>
#include <iostream>
#include <string>

#include "Steps.h"

namespace {

struct Step {
    const char* name;
    const char* usage;
    int (*show)(const Arguments&);
};

constexpr Step kSteps[] = {
    {"logging", "[LOGFILE]", showLogging},
    {"registry", "[KEY [VALUE...]]", showRegistry},
    {"commands", "[COMMAND...]", showCommands},
};

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
    std::cerr << "usage:\n";
    for (const Step& step : kSteps) {
        std::cerr << "  component " << step.name << ' ' << step.usage << '\n';
    }
    return 2;
}
