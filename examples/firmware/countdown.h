#pragma once

#include "board.h"

/// A timer that counts down once.

/// Lets \a timer count \a ticks clocks.
void countdown_start(HWP_TIMER_T *timer, uint32_t ticks);
/// Whether it has counted them all; stops it then.
int countdown_is_over(HWP_TIMER_T *timer);
