// Runs commands through the interpreter, one after the other, and shows what each wrote.
#include <iostream>

#include "Steps.h"
#include "command/CommandRunner.h"

int showCommands(const Arguments& arguments) {
    const Arguments commands =
        arguments.empty() ? Arguments{"ver", "echo one& echo two", "no-such-command"} : arguments;
    int exitCode = 0;
    for (const std::string& command : commands) {
        const auto [isStarted, output] = Quend::Framework::Command::runCommand(command);
        std::cout << "> " << command << '\n';
        if (isStarted) {
            std::cout << output << "(started, wrote " << output.size() << " bytes)\n";
        } else {
            std::cout << "(not started, or not done within the limit)\n";
            exitCode = 1;
        }
    }
    return exitCode;
}
