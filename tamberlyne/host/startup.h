// Start-up of the plug-in: the globals that describe where it runs, the filling of the host
// function table, and the reply that tells the host the plug-in's version and entry points.
#pragma once

#include "sdk/funcs.h"
#include "toolbox/errors.h"
#include "toolbox/files.h"
#include "toolbox/resources.h"

// The plug-in's own resource file: the one that is current while the host loads the bundle.
extern toolbox::ResFileRef gResFile;
// The running host application's file.
extern toolbox::FileSpec gStavioFSSpec;
// The host application's main bundle, named by its application file; null when the running
// application cannot be named.
extern const toolbox::FileSpec* gStavioBundle;

// What the bundle's `main` does: fills gStavioFuncs from the host's table (copied from an older
// host, looked up by name in a newer one) and answers in `reply`. 1 on success; 0 for a null
// argument or when the globals cannot be set up. Called once, before any entry point.
int32_t PluginMain(StavioFuncs* hostFuncs, SXPluginFuncs* reply);

// Sets gResFile, gStavioFSSpec and gStavioBundle. 0 on success, -1 when the running application
// is unknown, otherwise the status of naming its file.
toolbox::OSErr InitializeGlobals();

const toolbox::FileSpec* GetStavioBundleRef();

// The host function exported under `name` in the running application, or null.
void* GetSXProc(const char* name);
