// The host as far as the MIDI reader meets it: a function table whose alert call shows
// nothing, and the one wrapper the reader calls.
#include "tamberlyne/host/gateway.h"

namespace {
int32_t IgnoreAlert(EWND, int32_t, int32_t, const char*, EVERSION)
{
    return 0;
}

StavioFuncs SilentTable()
{
    StavioFuncs table{};
    table.size = static_cast<uint32_t>(sizeof(StavioFuncs));
    table.SX_AlertMessage = &IgnoreAlert;
    return table;
}
}   // namespace

StavioFuncs gStavioFuncs = SilentTable();

int32_t SX_AlertMessage(EWND owner, int32_t style, int32_t stringId, const char* text, EVERSION version)
{
    return gStavioFuncs.SX_AlertMessage(owner, style, stringId, text, version);
}
