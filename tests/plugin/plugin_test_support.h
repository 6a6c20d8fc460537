// Shared set-up: the reference host with a scripted front end, the plug-in's core started on
// the host's table, and a tap on the plug-in's record calls.
#pragma once

#include "stavio/document_builder.h"
#include "stavio/host.h"
#include "tests/support/plugin_core.h"
#include "tests/support/test_support.h"

#include <string>
#include <vector>

namespace plugin_test {

using support::BundlePath;
using support::BundleResourcePath;
using support::Ints;

// A host in `pose` holding `doc`, with the plug-in's core started on the host's table and the
// bundle's resource file current, as the host's loader has it.
class HostSession {
public:
    explicit HostSession(stavio::HostPose pose = stavio::HostPose::Newer,
                         stavio::Document doc = stavio::DocumentBuilder().Measures(4).Staff("Drum Set").Build());
    ~HostSession();
    stavio::Host host;
    stavio::ScriptedFrontEnd frontEnd;
    stavio::Document& document() { return host.document(); }
    std::vector<std::string> AlertTexts() const;
};

// Records the plug-in's calls into the host's load and save slots while it lives.
class RecordCallTap {
public:
    struct Call {
        bool save;
        EXTAG tag;
        EDataID key;
        int32_t size;
        EVERSION version;
    };
    RecordCallTap();
    ~RecordCallTap();
    std::vector<Call> calls;
    size_t Saves() const;
};

void PutOther(stavio::Document& doc, EXTAG tag, uint16_t inci, const EDTGeneric& record, uint16_t cmper = 0xfffe);
EDTGeneric GetOther(const stavio::Document& doc, EXTAG tag, uint16_t inci = 0, uint16_t cmper = 0xfffe);

constexpr EXTAG Tag(const char (&text)[5])
{
    return MakeTag(text[0], text[1], text[2], text[3]);
}

}   // namespace plugin_test
