// The whole plug-in interface.
#pragma once

#include "sdk/frames.h"
#include "sdk/funcs.h"
#include "sdk/records.h"
#include "sdk/tags.h"
#include "sdk/types.h"
