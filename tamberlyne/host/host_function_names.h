// The names under which a newer host exports its functions, one per table slot.
#pragma once

// The exported name of the host function in `slot` (2 to 105), or null for a slot that has no
// name: slot 82 was never given one, so a host resolved by name leaves it empty.
const char* HostFunctionName(int slot);
