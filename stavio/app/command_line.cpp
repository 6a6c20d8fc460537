#include "stavio/app/command_line.h"

namespace stavio::app {

namespace {

using toolbox::Status;

// "--name=value" or "--name value"; a failure when the value is missing.
toolbox::Result<std::string> TakeValue(const std::string& option, const std::string& name, int argc, char** argv,
                                       int& index)
{
    if (option.size() > name.size() && option.compare(0, name.size() + 1, name + "=") == 0) {
        return option.substr(name.size() + 1);
    }
    if (index + 1 >= argc) {
        return Status::Failure("option " + name + " needs a value");
    }
    return std::string(argv[++index]);
}

}   // namespace

bool IsOption(const std::string& argument, const std::string& name)
{
    return argument == name || argument.compare(0, name.size() + 1, name + "=") == 0;
}

toolbox::Result<std::string> TakeOptionValue(const std::vector<std::string>& arguments, size_t& index,
                                             const std::string& name)
{
    const std::string& argument = arguments[index];
    std::string value;
    if (argument.size() > name.size() && argument.compare(0, name.size() + 1, name + "=") == 0) {
        value = argument.substr(name.size() + 1);
    } else if (index + 1 < arguments.size()) {
        value = arguments[++index];
    }
    if (value.empty()) {
        return Status::Failure("option " + name + " needs a value");
    }
    return value;
}

toolbox::Result<CommandLine> ParseCommandLine(int argc, char** argv)
{
    CommandLine line;
    for (int index = 1; index < argc; ++index) {
        const std::string argument = argv[index];
        if (argument == "--help" || argument == "-h") {
            line.help = true;
        } else if (IsOption(argument, "--plugins")) {
            const toolbox::Result<std::string> folder = TakeValue(argument, "--plugins", argc, argv, index);
            if (!folder) {
                return folder.status();
            }
            if (folder->empty()) {
                return Status::Failure("option --plugins needs a folder");
            }
            line.settings.pluginFolder = *folder;
        } else if (IsOption(argument, "--pose")) {
            const toolbox::Result<std::string> pose = TakeValue(argument, "--pose", argc, argv, index);
            if (!pose) {
                return pose.status();
            }
            if (*pose == "newer") {
                line.settings.pose = HostPose::Newer;
            } else if (*pose == "older") {
                line.settings.pose = HostPose::Older;
            } else {
                return Status::Failure("option --pose takes \"newer\" or \"older\", not \"" + *pose + "\"");
            }
        } else if (argument.size() > 1 && argument[0] == '-' && line.command.empty()) {
            return Status::Failure("unknown option \"" + argument + "\"");
        } else if (line.command.empty()) {
            line.command = argument;
        } else {
            line.arguments.push_back(argument);
        }
    }
    return line;
}

}   // namespace stavio::app
