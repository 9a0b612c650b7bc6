#pragma once

/// The board of ../cmsdk_cm3, as all parts of this firmware see it.

#include <veldmap/types.h>

#include "globals.h"
#include "soc_accessors.h"

/// Clocks in a second.
#define BOARD_CLOCK 25000000U
