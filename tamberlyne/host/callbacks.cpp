#include "tamberlyne/host/callbacks.h"

#include "tamberlyne/host/gateway.h"
#include "toolbox/system.h"

#include <new>

namespace {
constexpr uint32_t kSystemVersionSelector = 0x73797376;   // 'sysv'
constexpr uint32_t kLastClassicSystem = 0x0fff;
}   // namespace

bool IsStavioCFM()
{
    if (GetGestaltResult(kSystemVersionSelector) <= kLastClassicSystem) {
        return true;
    }
    return SX_IsMachO(kPluginApiVersion) == 0;
}

uint32_t GetGestaltResult(uint32_t selector)
{
    return toolbox::SystemQuery(selector);
}

void* CFMFunctionPointerForMachOFunctionPointer(void* code)
{
    SXTransitionVector* vector = new (std::nothrow) SXTransitionVector;
    if (vector == nullptr) {
        return nullptr;
    }
    vector->code = reinterpret_cast<SXDialogHandler>(code);
    vector->toc = nullptr;
    return vector;
}

void DisposeCFMFunctionPointer(void* wrapper)
{
    delete static_cast<SXTransitionVector*>(wrapper);
}

SXDialogHandlerRef NewDialogHandlerProc(SXDialogHandler proc)
{
    void* code = reinterpret_cast<void*>(proc);
    if (!IsStavioCFM()) {
        return code;
    }
    return CFMFunctionPointerForMachOFunctionPointer(code);
}

void DisposeDialogHandlerProc(SXDialogHandlerRef ref)
{
    if (IsStavioCFM() && ref != nullptr) {
        DisposeCFMFunctionPointer(ref);
    }
}
