#include "stavio/app/commands.h"

#include "stavio/app/fill_options.h"

#include <sstream>

namespace stavio::app {

const std::vector<Command>& Commands()
{
    static const std::vector<Command> commands = {
        {"plugins", "", "load the plug-in folder and list each plug-in's menu command", RunPluginsCommand},
        {"fill", "[fill options]",
         "fill measures of a MusicXML score (or a demo score) with a drum groove (see fill --help)", RunFillCommand,
         FillUsageText},
        {"info", "SCORE [--json]", "the parts, staves, measures and meters of a MusicXML score", RunInfoCommand,
         InfoUsageText},
        {"convert", "IN -o OUT", "a MusicXML score between .musicxml and .mxl, nothing else changed", RunConvertCommand,
         ConvertUsageText},
        {"grooves", "[show NAME]", "list the groove folder as the plug-in sees it, or show a groove's drum grid",
         RunGroovesCommand, GroovesUsageText},
        {"serve", "[options]", "serve the page: a score in the browser, the plug-in's dialog, undo", RunServeCommand,
         ServeUsageText},
        {"export", "SCORE -o OUT", "a MusicXML score (or the demo score) as a Standard MIDI File (see export --help)",
         RunExportCommand, ExportUsageText},
    };
    return commands;
}

std::string UsageText()
{
    std::ostringstream text;
    text << "Usage: tamberlyne [options] <command> [arguments]\n"
            "\n"
            "The reference host for the Tamberlyne plug-in: it loads plug-in bundles through the\n"
            "host's binary interface and runs their commands on a score document.\n"
            "\n"
            "Commands:\n";
    for (const Command& command : Commands()) {
        std::string head = std::string(command.name) + (command.arguments[0] != '\0' ? " " : "") + command.arguments;
        text << "  " << head << std::string(head.size() < 20 ? 20 - head.size() : 1, ' ') << command.summary << "\n";
    }
    text << "\n"
            "Options:\n"
            "  --plugins DIR       the plug-in folder (default: PlugIns beside the program, else\n"
            "                      the installed ../lib/tamberlyne/PlugIns)\n"
            "  --pose newer|older  present the host as a newer one (plug-in finds host functions by\n"
            "                      name; the default) or an older one (plug-in copies the table)\n"
            "  -h, --help          show this text\n"
            "\n"
            "Exit status: 0 success, 1 failure, 2 wrong usage.\n";
    return text.str();
}

}   // namespace stavio::app
