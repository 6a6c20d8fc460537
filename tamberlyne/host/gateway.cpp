// The wrapper families over the host table. (Start-up, by-name lookup and callback wrapping
// follow in this file.)
#include "tamberlyne/host/gateway.h"

namespace {
StavioFuncs EmptyTable()
{
    StavioFuncs table{};
    table.size = static_cast<uint32_t>(sizeof(StavioFuncs));
    return table;
}
}  // namespace

StavioFuncs gStavioFuncs = EmptyTable();
int32_t StavioEditDepth = 0;
int32_t MassEditDepth = 0;

int32_t SX_AlertMessage(EWND owner, int32_t style, int32_t stringId, const char* text, EVERSION version)
{
    return gStavioFuncs.SX_AlertMessage(owner, style, stringId, text, version);
}
