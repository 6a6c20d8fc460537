// The `tamberlyne` command's arguments: a command name, its arguments, and the host options
// that may stand anywhere on the line.
#pragma once

#include "stavio/host.h"

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

// Parses argv[1..]. On failure returns false and sets `error` to a message for a person.
bool ParseCommandLine(int argc, char** argv, CommandLine& line, std::string& error);

}   // namespace stavio::app
