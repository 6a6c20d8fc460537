// `tamberlyne grooves`: the groove library's subcommands. Until the library listing lands it
// knows only `play` (grooves_play_command.cpp).
#include "stavio/app/commands.h"

#include <ostream>

namespace stavio::app {

int RunGroovesCommand(const CommandLine& line, std::ostream& out, std::ostream& err)
{
    if (!line.arguments.empty() && line.arguments[0] == "play") {
        CommandLine play = line;
        play.arguments.erase(play.arguments.begin());
        return RunGroovesPlayCommand(play, out, err);
    }
    err << "tamberlyne: grooves takes a subcommand: play\n\n" << GroovesPlayUsageText();
    return kExitUsage;
}

}   // namespace stavio::app
