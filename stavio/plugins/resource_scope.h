// Makes a plug-in's resource file current for the length of a call into the plug-in and puts
// back the file that was current before: the plug-in finds its strings and dialogs through
// the resource chain, starting at the current file.
#pragma once

#include "toolbox/resources.h"

namespace stavio {

class ResourceScope {
public:
    explicit ResourceScope(toolbox::ResFileRef file) : previous_(toolbox::CurResFile())
    {
        if (file >= 0) {
            toolbox::UseResFile(file);
        }
    }
    ~ResourceScope() { toolbox::UseResFile(previous_); }
    ResourceScope(const ResourceScope&) = delete;
    ResourceScope& operator=(const ResourceScope&) = delete;

private:
    toolbox::ResFileRef previous_;
};

}   // namespace stavio
