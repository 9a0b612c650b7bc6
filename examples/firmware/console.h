#pragma once

#include "board.h"

/// A serial port on which texts are written.

/// Switches \a uart on. A bit takes \a divider clocks, at least 16.
void console_start(HWP_UART_T *uart, uint32_t divider);
/// Writes \a character as soon as the port takes one.
void console_put(HWP_UART_T *uart, char character);
void console_print(HWP_UART_T *uart, const char *text);
/// Writes \a value in decimal.
void console_print_number(HWP_UART_T *uart, uint32_t value);
