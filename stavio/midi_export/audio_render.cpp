#include "stavio/midi_export/audio_render.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

extern char** environ;

namespace stavio::midi_export {

namespace {

namespace fs = std::filesystem;

constexpr const char* kSoundFonts[] = {"/usr/share/sounds/sf2/TimGM6mb.sf2", "/usr/share/sounds/sf2/default-GM.sf2"};
// FluidSynth's default gain (0.2) is quiet for a single staff; 0.6 leaves room for a band.
constexpr char kGain[] = "0.6";

std::string Lowercase(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

bool IsExecutableFile(const std::string& path)
{
    std::error_code ignored;
    return fs::is_regular_file(path, ignored) && ::access(path.c_str(), X_OK) == 0;
}

std::string FindOnPath(const std::string& program)
{
    const char* path = std::getenv("PATH");
    std::istringstream folders(path != nullptr ? path : "");
    std::string folder;
    while (std::getline(folders, folder, ':')) {
        const std::string candidate = (folder.empty() ? std::string(".") : folder) + "/" + program;
        if (IsExecutableFile(candidate)) {
            return candidate;
        }
    }
    return {};
}

// A private folder for the MIDI and FluidSynth's messages, removed with everything in it.
class PrivateFolder {
public:
    PrivateFolder()
    {
        std::string pattern = (fs::temp_directory_path() / "tamberlyne-audio-XXXXXX").string();
        if (::mkdtemp(pattern.data()) != nullptr) {
            path_ = pattern;
        }
    }
    ~PrivateFolder()
    {
        if (!path_.empty()) {
            std::error_code ignored;
            fs::remove_all(path_, ignored);
        }
    }
    PrivateFolder(const PrivateFolder&) = delete;
    PrivateFolder& operator=(const PrivateFolder&) = delete;
    const std::string& Path() const { return path_; }

private:
    std::string path_;
};

bool WriteBytes(const std::string& path, const std::vector<uint8_t>& bytes)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    out.close();
    return static_cast<bool>(out);
}

// What FluidSynth said that tells why it failed: its first error line, else its last line.
std::string Complaint(const std::string& logPath, bool& complained)
{
    std::ifstream in(logPath);
    std::string line;
    std::string last;
    complained = false;
    while (std::getline(in, line)) {
        if (line.find("error") != std::string::npos) {
            complained = true;
            return line;
        }
        if (!line.empty()) {
            last = line;
        }
    }
    return last;
}

// A SoundFont 2 file is a RIFF file of form "sfbk".
bool IsSoundFont(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    char head[12] = {};
    in.read(head, sizeof(head));
    return in.gcount() == static_cast<std::streamsize>(sizeof(head)) && std::memcmp(head, "RIFF", 4) == 0 &&
           std::memcmp(head + 8, "sfbk", 4) == 0;
}

// The environment the renderer runs in: ours, but with the temporary and runtime folders in
// `scratch`. Without a session's runtime folder, FluidSynth's sound-server client leaves a
// folder of its own in the temporary folder, which belongs to whoever runs us (the page's server
// promises to leave its temporary folder as it found it).
std::vector<std::string> RendererEnvironment(const std::string& scratch)
{
    std::vector<std::string> variables;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        const std::string text(*variable);
        if (text.rfind("TMPDIR=", 0) != 0 && text.rfind("XDG_RUNTIME_DIR=", 0) != 0) {
            variables.push_back(text);
        }
    }
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    variables.push_back("XDG_RUNTIME_DIR=" + std::string(runtime != nullptr && *runtime != '\0' ? runtime : scratch));
    variables.push_back("TMPDIR=" + scratch);
    return variables;
}

std::vector<char*> NullTerminated(const std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    for (const std::string& text : texts) {
        pointers.push_back(const_cast<char*>(text.c_str()));
    }
    pointers.push_back(nullptr);
    return pointers;
}

// Runs the program with its output in `logPath` and its temporary files in `scratch`; its exit
// status, or -1 when it did not run.
int RunChild(const std::vector<std::string>& arguments, const std::string& logPath, const std::string& scratch)
{
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, logPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    const std::vector<char*> argv = NullTerminated(arguments);
    const std::vector<std::string> environment = RendererEnvironment(scratch);
    const std::vector<char*> envp = NullTerminated(environment);
    pid_t child = 0;
    const int spawned = posix_spawn(&child, arguments[0].c_str(), &actions, nullptr, argv.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    if (spawned != 0) {
        return -1;
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0) {
        if (errno != EINTR) {
            return -1;
        }
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}   // namespace

toolbox::Result<AudioFormat> AudioFormatOf(const std::string& path)
{
    const std::string extension = Lowercase(fs::path(path).extension().string());
    if (extension == ".wav") {
        return AudioFormat::Wav;
    }
    if (extension == ".ogg") {
        return AudioFormat::Ogg;
    }
    return toolbox::Status::Failure("the audio file " + path + " must end in .wav or .ogg");
}

toolbox::Result<AudioTools> FindAudioTools(const std::optional<std::string>& soundFontOption)
{
    AudioTools tools;
    tools.fluidsynth = FindOnPath("fluidsynth");
    if (tools.fluidsynth.empty()) {
        return toolbox::Status::Failure(
            "FluidSynth is needed to render audio and \"fluidsynth\" is not on the PATH; install the Debian package " +
            std::string(kFluidSynthPackage) + " (apt-get install " + kFluidSynthPackage + ")");
    }
    std::error_code ignored;
    if (soundFontOption) {
        if (!fs::is_regular_file(*soundFontOption, ignored)) {
            return toolbox::Status::Failure("the sound font " + *soundFontOption +
                                            " does not exist; name another with --sound-font or "
                                            "install the Debian package " +
                                            kSoundFontPackage + " for the default one");
        }
        if (!IsSoundFont(*soundFontOption)) {
            return toolbox::Status::Failure("the sound font " + *soundFontOption + " is not a SoundFont 2 file (.sf2)");
        }
        tools.soundFont = *soundFontOption;
        return tools;
    }
    for (const char* font : kSoundFonts) {
        if (fs::is_regular_file(font, ignored)) {
            tools.soundFont = font;
            return tools;
        }
    }
    return toolbox::Status::Failure(std::string("no General MIDI sound font was found (") + kSoundFonts[0] +
                                    "); install the Debian package " + kSoundFontPackage + " (apt-get install " +
                                    kSoundFontPackage + ") or name a font with --sound-font");
}

toolbox::Status RenderAudio(const std::vector<uint8_t>& midi, const std::string& outputPath, const AudioTools& tools)
{
    const toolbox::Result<AudioFormat> format = AudioFormatOf(outputPath);
    if (!format) {
        return format.status();
    }
    PrivateFolder scratch;
    if (scratch.Path().empty()) {
        return toolbox::Status::Failure("cannot make a temporary folder for the MIDI: " +
                                        std::string(std::strerror(errno)));
    }
    const std::string midiPath = scratch.Path() + "/render.mid";
    const std::string logPath = scratch.Path() + "/fluidsynth.log";
    if (!WriteBytes(midiPath, midi)) {
        return toolbox::Status::Failure("cannot write the MIDI to " + midiPath);
    }

    const fs::path target(outputPath);
    const fs::path folder = target.parent_path().empty() ? fs::path(".") : target.parent_path();
    std::string temporary = (folder / ("." + target.filename().string() + ".XXXXXX")).string();
    const int fd = ::mkstemp(temporary.data());
    if (fd < 0) {
        return toolbox::Status::Failure(outputPath + ": cannot write a temporary file in " + folder.string() + ": " +
                                        std::strerror(errno));
    }
    ::fchmod(fd, 0644);   // the audio is the person's file, not a private temporary one
    ::close(fd);

    const std::vector<std::string> arguments = {tools.fluidsynth,
                                                "-n",
                                                "-i",
                                                "-q",
                                                "-g",
                                                kGain,
                                                "-r",
                                                std::to_string(kAudioSampleRate),
                                                "-F",
                                                temporary,
                                                "-T",
                                                *format == AudioFormat::Wav ? "wav" : "oga",
                                                tools.soundFont,
                                                midiPath};
    const int status = RunChild(arguments, logPath, scratch.Path());
    std::error_code sizeError;
    const auto written = fs::file_size(temporary, sizeError);
    bool complained = false;
    const std::string log = Complaint(logPath, complained);
    // FluidSynth goes on without a font it cannot load, rendering silence: its error line tells.
    if (status != 0 || sizeError || written == 0 || complained) {
        std::error_code ignored;
        fs::remove(temporary, ignored);
        return toolbox::Status::Failure(
            "FluidSynth could not render " + outputPath +
            (status < 0 ? std::string(" (it did not run)") : " (exit status " + std::to_string(status) + ")") +
            (log.empty() ? "" : ": " + log));
    }
    if (::rename(temporary.c_str(), outputPath.c_str()) != 0) {
        const toolbox::Status failure =
            toolbox::Status::Failure(outputPath + ": cannot be written: " + std::strerror(errno));
        std::error_code ignored;
        fs::remove(temporary, ignored);
        return failure;
    }
    return toolbox::Status::Ok();
}

}   // namespace stavio::midi_export
