// The `tamberlyne` command: the reference host on the command line.
#include "stavio/app/command_line.h"
#include "stavio/app/commands.h"

#include <exception>
#include <iostream>

int main(int argc, char** argv)
{
    using namespace stavio::app;
    try {
        const toolbox::Result<CommandLine> parsed = ParseCommandLine(argc, argv);
        if (!parsed) {
            std::cerr << "tamberlyne: " << parsed.Message() << "\n\n" << UsageText();
            return kExitUsage;
        }
        const CommandLine& line = *parsed;
        if (line.help || line.command == "help") {
            for (const Command& command : Commands()) {
                if (line.command == command.name && command.usage != nullptr) {
                    std::cout << command.usage();
                    return kExitOk;
                }
            }
            std::cout << UsageText();
            return kExitOk;
        }
        if (line.command.empty()) {
            std::cerr << "tamberlyne: no command given\n\n" << UsageText();
            return kExitUsage;
        }
        for (const Command& command : Commands()) {
            if (line.command == command.name) {
                return command.run(line, std::cout, std::cerr);
            }
        }
        std::cerr << "tamberlyne: unknown command \"" << line.command << "\"\n\n" << UsageText();
        return kExitUsage;
    } catch (const std::exception& failure) {
        std::cerr << "tamberlyne: " << failure.what() << "\n";
        return kExitFailure;
    }
}
