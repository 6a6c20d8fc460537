#include "stavio/app/command_line.h"

namespace stavio::app {

namespace {

// "--name=value" or "--name value"; false with an error when the value is missing.
bool TakeValue(const std::string& option, const std::string& name, int argc, char** argv, int& index,
               std::string& value, std::string& error)
{
    if (option.size() > name.size() && option.compare(0, name.size() + 1, name + "=") == 0) {
        value = option.substr(name.size() + 1);
        return true;
    }
    if (index + 1 >= argc) {
        error = "option " + name + " needs a value";
        return false;
    }
    value = argv[++index];
    return true;
}

bool IsOption(const std::string& argument, const std::string& name)
{
    return argument == name || argument.compare(0, name.size() + 1, name + "=") == 0;
}

}   // namespace

bool ParseCommandLine(int argc, char** argv, CommandLine& line, std::string& error)
{
    for (int index = 1; index < argc; ++index) {
        const std::string argument = argv[index];
        if (argument == "--help" || argument == "-h") {
            line.help = true;
        } else if (IsOption(argument, "--plugins")) {
            if (!TakeValue(argument, "--plugins", argc, argv, index, line.settings.pluginFolder, error)) {
                return false;
            }
            if (line.settings.pluginFolder.empty()) {
                error = "option --plugins needs a folder";
                return false;
            }
        } else if (IsOption(argument, "--pose")) {
            std::string pose;
            if (!TakeValue(argument, "--pose", argc, argv, index, pose, error)) {
                return false;
            }
            if (pose == "newer") {
                line.settings.pose = HostPose::Newer;
            } else if (pose == "older") {
                line.settings.pose = HostPose::Older;
            } else {
                error = "option --pose takes \"newer\" or \"older\", not \"" + pose + "\"";
                return false;
            }
        } else if (argument.size() > 1 && argument[0] == '-' && line.command.empty()) {
            error = "unknown option \"" + argument + "\"";
            return false;
        } else if (line.command.empty()) {
            line.command = argument;
        } else {
            line.arguments.push_back(argument);
        }
    }
    return true;
}

}   // namespace stavio::app
