#include "LineCommands.h"

#include <iostream>

namespace orlo::test {

int obeyInput(const LineCommands& commands)
{
    std::string line;
    while (std::getline(std::cin, line) && line != "leave") {
        const std::string command = line.substr(0, line.find(' '));
        const std::string argument = command.size() < line.size() ? line.substr(command.size() + 1) : std::string();
        const auto found = commands.find(command);
        std::cout << (found == commands.end() ? "what?" : found->second(argument)) << std::endl;
    }
    return 0;
}

std::string yesOrNo(bool answer)
{
    return answer ? "yes" : "no";
}

} // namespace orlo::test
