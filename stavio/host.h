// The reference host: one session that owns a score document, loads plug-in bundles through
// the binary interface, offers them the whole host function table and runs their commands.
//
// While a Host exists it is the process's current host: the exported host functions
// (SX_LoadEData ...) that a plug-in finds by name act on it. One host at a time.
#pragma once

#include "sdk/sdk.h"
#include "stavio/document/document.h"
#include "stavio/frame_ledger.h"
#include "stavio/front_end.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace stavio {

// How the host presents itself to a plug-in's `main`.
enum class HostPose {
    Newer,   // table version 0x0C000000: the plug-in finds host functions by name
    Older,   // table version 0x08FFFFFF: the plug-in copies the table's slots
};

constexpr uint32_t kNewerHostVersion = 0x0C000000;
constexpr uint32_t kOlderHostVersion = 0x08FFFFFF;

struct HostSettings {
    HostPose pose = HostPose::Newer;
    std::string pluginFolder;        // empty: <application folder>/PlugIns
    std::string applicationFolder;   // empty: the folder of the running program
};

// A plug-in that loaded and offered its command.
struct PluginInfo {
    std::string bundlePath;
    std::string modulePath;
    std::string resourcePath;
    uint32_t interfaceVersion = 0;   // what its version entry point answered
    uint32_t initFlags = 0;          // what its init entry point wrote
    SXT_MENUSTRING_PACKET menu{};    // what its enumerate entry point filled
    std::string MenuItem() const;
    std::string StatusText() const;
    std::string UndoText() const;
};

// A bundle that could not be loaded, and why.
struct PluginFailure {
    std::string path;
    std::string message;   // names the bundle and what is wrong with it
};

// A request to run a dialog, as the host received it.
struct DialogRequest {
    int32_t dialogId = 0;
    SXDialogHandler handler = nullptr;   // resolved for the pose (see SX_Dialog)
    void* userData = nullptr;
    int32_t modal = 0;
    uint32_t* flags = nullptr;
};

class Host {
public:
    explicit Host(HostSettings settings = {}, FrontEnd* frontEnd = nullptr);
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    // The host that the exported host functions act on (null when none).
    static Host* Current();
    void MakeCurrent();

    const HostSettings& Settings() const;
    HostPose Pose() const;
    uint32_t TableVersion() const;
    // The table handed to every plug-in's `main` for this host's pose.
    const StavioFuncs& FunctionTable() const;
    std::string PluginFolder() const;
    std::string ApplicationFolder() const;

    Document& document();
    const Document& document() const;
    void SetDocument(Document doc);

    // Entry frames handed to plug-ins (SX_LoadQVF ... SX_FreeQVF). A command that frees every
    // frame it loads leaves LiveFrameCount() where it was; RefusedFrameFrees() counts frees of
    // frames that were not out (freed twice, or never the host's).
    FrameLedger& Frames();
    size_t LiveFrameCount() const;
    size_t RefusedFrameFrees() const;

    FrontEnd& frontEnd();
    void SetFrontEnd(FrontEnd* frontEnd);   // null: a scripted front end with no answers

    // ---- Plug-ins -------------------------------------------------------------------------------
    // Loads every "*.bundle" of the plug-in folder (in name order); returns how many loaded. A
    // missing plug-in folder is recorded as a failure.
    size_t LoadPlugins();
    // Loads one bundle folder; false (and a failure recorded) when it cannot be used.
    bool LoadBundle(const std::string& bundlePath);
    void UnloadPlugins();
    const std::vector<PluginInfo>& Plugins() const;
    const std::vector<PluginFailure>& Failures() const;

    // Runs the plug-in's command on the current document with `selection` (null: nothing
    // selected) and the whole document as the document region; returns the plug-in's result.
    int32_t Invoke(size_t plugin, const EREGION* selection);
    int32_t MenuStatus(size_t plugin);

    // ---- What the plug-in asked of the host ------------------------------------------------------
    // The selection of the running command (false when none).
    bool CurrentSelection(EREGION& selection) const;
    int32_t RedrawCount() const;
    void NoteRedraw();
    const std::vector<DialogRequest>& DialogRequests() const;
    int32_t RequestDialog(int32_t dialogId, SXDialogHandlerRef handler, void* userData, int32_t modal, uint32_t* flags);
    // Shows an alert through the front end; the text is resolved as SX_AlertMessage does.
    int32_t Alert(int32_t style, int32_t stringId, const char* text);

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

// The alert text for a string id: entry NNNN of string list LLLL for an id 0xLLLLNNNN, found
// through the resource chain ("" when it cannot be found).
std::string ResolveAlertText(int32_t stringId);

}   // namespace stavio
