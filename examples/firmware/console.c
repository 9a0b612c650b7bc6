#include "console.h"

void console_start(HWP_UART_T *uart, uint32_t divider)
{
    uart_bauddiv_write(uart, divider);
    // The register is read and written once, however many of its fields change in between.
    uint32_t ctrl = uart_ctrl_read(uart);
    ctrl = uart_ctrl_with_txen(ctrl, uart_ctrl_txen_e_disable_enable_enable);
    ctrl = uart_ctrl_with_rxen(ctrl, uart_ctrl_rxen_e_disable_enable_disable);
    uart_ctrl_write(uart, ctrl);
}

void console_put(HWP_UART_T *uart, char character)
{
    while (uart_state_get_txbf(uart)) {
    }
    uart_data_write(uart, (uint8_t)character);
}

void console_print(HWP_UART_T *uart, const char *text)
{
    for (; *text; ++text)
        console_put(uart, *text);
}

void console_print_number(HWP_UART_T *uart, uint32_t value)
{
    if (value >= 10)
        console_print_number(uart, value / 10);
    console_put(uart, (char)('0' + value % 10));
}
