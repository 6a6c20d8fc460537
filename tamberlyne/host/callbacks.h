// Callbacks handed to the host. A host that does not report itself as a Mach-O program expects
// old-style function pointers: an 8-byte transition vector whose first word is the code
// address (SXTransitionVector). Such hosts call through the vector's first word.
#pragma once

#include "sdk/funcs.h"

// True when callbacks must be wrapped: on a system older than the modern one, or when the host
// does not say it is a Mach-O program (an older host without that query included).
bool IsStavioCFM();

// The answer of the system query `selector` (four characters), or 0 when the query fails.
uint32_t GetGestaltResult(uint32_t selector);

// The dialog handler in the form the host expects; release it with DisposeDialogHandlerProc.
// Null only when the wrapper cannot be allocated.
SXDialogHandlerRef NewDialogHandlerProc(SXDialogHandler proc);
void DisposeDialogHandlerProc(SXDialogHandlerRef ref);

// The handler in the host's form for as long as it exists: made when it is, released when it
// goes, so that every path out of a dialog releases it once.
class DialogHandlerProc {
public:
    explicit DialogHandlerProc(SXDialogHandler proc) : ref_(NewDialogHandlerProc(proc)) {}
    ~DialogHandlerProc() { DisposeDialogHandlerProc(ref_); }
    DialogHandlerProc(const DialogHandlerProc&) = delete;
    DialogHandlerProc& operator=(const DialogHandlerProc&) = delete;

    SXDialogHandlerRef Get() const { return ref_; }

private:
    SXDialogHandlerRef ref_;
};

// The wrapping primitives: a new transition vector holding `code` (null when out of memory),
// and its release.
void* CFMFunctionPointerForMachOFunctionPointer(void* code);
void DisposeCFMFunctionPointer(void* wrapper);
