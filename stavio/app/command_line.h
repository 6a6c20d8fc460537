// The `tamberlyne` command's arguments: a command name, its arguments, and the host options
// that may stand anywhere on the line.
#pragma once

#include "stavio/host.h"
#include "toolbox/status.h"

#include <string>
#include <vector>

namespace stavio::app {

struct CommandLine {
    std::string command;                  // empty when none was given
    std::vector<std::string> arguments;   // what follows the command, host options taken out (the
                                          // command's own options stay, in order)
    HostSettings settings;
    bool help = false;
};

// Parses argv[1..]; a failure says what is wrong with the line, for a person.
toolbox::Result<CommandLine> ParseCommandLine(int argc, char** argv);

// Whether `argument` is option `name`, as "--name" or "--name=value".
bool IsOption(const std::string& argument, const std::string& name);

// The value of option `name` at arguments[index]: "--name=value", or "--name value" (then `index`
// moves onto the value). A failure when the value is missing or empty.
toolbox::Result<std::string> TakeOptionValue(const std::vector<std::string>& arguments, size_t& index,
                                             const std::string& name);

}   // namespace stavio::app
