#include "countdown.h"

void countdown_start(HWP_TIMER_T *timer, uint32_t ticks)
{
    timer_reload_write(timer, ticks);
    timer_value_write(timer, ticks);
    // With the macros of the plain headers: TIMER_ENABLE_... stands for a value of the field in its place.
    timer->CTRL = TIMER_ENABLE_E_DISABLE_ENABLE_ENABLE | TIMER_INTEN_E_DISABLE_ENABLE_ENABLE;
}

int countdown_is_over(HWP_TIMER_T *timer)
{
    if (timer_intstatus_read(timer) == 0)
        return 0;
    timer_ctrl_write(timer, timer_ctrl_with_enable(timer_ctrl_read(timer), 0));
    return 1;
}
