// Says hello on the first serial port, waits for a timer, and switches a light on.

#include "console.h"
#include "countdown.h"

int main(void)
{
    console_start(hwp_uart0, BOARD_CLOCK / 115200U);
    console_print(hwp_uart0, "hello from ");
    console_print_number(hwp_uart0, NB_INSTANCES);
    console_print(hwp_uart0, " blocks\n");

    uint32_t rounds = 0;
    countdown_start(hwp_timer0, BOARD_CLOCK / 1000U);
    while (!countdown_is_over(hwp_timer0))
        ++rounds;
    console_print(hwp_uart0, rounds > 0 ? "the timer is over\n" : "the timer did not run\n");

    fpgaio_led_write(hwp_fpgaio, fpgaio_led_with_led1(fpgaio_led_read(hwp_fpgaio), fpgaio_led_led1_e_off_on_on));
    console_print(hwp_uart0, fpgaio_led_get_led1(hwp_fpgaio) ? "the light is on\n" : "the light is off\n");
    return rounds > 0 && fpgaio_led_get_led1(hwp_fpgaio) ? 0 : 1;
}
