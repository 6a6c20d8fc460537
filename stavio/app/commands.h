// The commands of `tamberlyne`. Each runs with its parsed command line and writes its results
// to `out` and its complaints to `err`; it returns the process's exit status.
#pragma once

#include "stavio/app/command_line.h"

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace stavio::app {

constexpr int kExitOk = 0;
constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;

struct Command {
    const char* name;
    const char* arguments;   // how the arguments read in the usage text
    const char* summary;
    int (*run)(const CommandLine& line, std::ostream& out, std::ostream& err);
    std::string (*usage)() = nullptr;   // the command's own help text, if it has one
};

const std::vector<Command>& Commands();
std::string UsageText();

int RunPluginsCommand(const CommandLine& line, std::ostream& out, std::ostream& err);
int RunFillCommand(const CommandLine& line, std::ostream& out, std::ostream& err);
int RunInfoCommand(const CommandLine& line, std::ostream& out, std::ostream& err);
int RunConvertCommand(const CommandLine& line, std::ostream& out, std::ostream& err);
std::string InfoUsageText();
std::string ConvertUsageText();
std::string GroovesUsageText();
// What `grooves show NAME` prints: the drum grid of the groove called `name` (its name or file
// name) in `folder`. nullopt and why, for a person, when it is not a groove the plug-in takes.
std::optional<std::string> GrooveGridText(const std::string& folder, const std::string& name, std::string& error);
int RunServeCommand(const CommandLine& line, std::ostream& out, std::ostream& err);
std::string ServeUsageText();
int RunExportCommand(const CommandLine& line, std::ostream& out, std::ostream& err);
std::string ExportUsageText();
// `grooves` dispatches `grooves play ...` to RunGroovesPlayCommand with the arguments after "play".
int RunGroovesCommand(const CommandLine& line, std::ostream& out, std::ostream& err);
int RunGroovesPlayCommand(const CommandLine& line, std::ostream& out, std::ostream& err);
std::string GroovesPlayUsageText();

}   // namespace stavio::app
