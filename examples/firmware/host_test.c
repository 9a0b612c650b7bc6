// Tests the drivers on the machine that compiles them. A buffer does what it is told and no more: it shows what a
// driver writes, and is told what a driver shall read.

#include "console.h"
#include "countdown.h"

#include <stdio.h>
#include <string.h>

uint32_t board[BOARD_BYTES / 4];

static int checks, faults;

static void expect(int holds, const char *what)
{
    ++checks;
    if (!holds) {
        ++faults;
        printf("not so: %s\n", what);
    }
}
#define EXPECT(condition) expect(condition, #condition)

static void test_console(void)
{
    memset(board, 0, sizeof board);
    hwp_uart0->CTRL = UART_RXEN_E_DISABLE_ENABLE_ENABLE | UART_HSTX_E_DISABLE_ENABLE_ENABLE;
    console_start(hwp_uart0, 217);
    EXPECT(hwp_uart0->BAUDDIV == 217);
    EXPECT(uart_ctrl_get_txen(hwp_uart0) == 1);
    EXPECT(uart_ctrl_get_rxen(hwp_uart0) == 0);
    EXPECT(uart_ctrl_get_hstx(hwp_uart0) == 1); // what a driver does not know of stays
    EXPECT(board[0x4008 / 4] == 0x41);          // CTRL, by the address in the board's manual
    console_print(hwp_uart0, "ab");
    EXPECT(hwp_uart0->DATA == 'b');
    console_print_number(hwp_uart1, 120);
    EXPECT(hwp_uart1->DATA == '0' && hwp_uart0->DATA == 'b');
}

static void test_countdown(void)
{
    memset(board, 0, sizeof board);
    countdown_start(hwp_timer1, 500);
    EXPECT(hwp_timer1->RELOAD == 500 && hwp_timer1->VALUE == 500);
    EXPECT(hwp_timer1->CTRL == 0x9);
    EXPECT(!countdown_is_over(hwp_timer1));
    hwp_timer1->INTSTATUS = 1;
    EXPECT(countdown_is_over(hwp_timer1));
    EXPECT(hwp_timer1->CTRL == 0x8);
}

int main(void)
{
    test_console();
    test_countdown();
    printf("%d checks, %d faults\n", checks, faults);
    return faults != 0;
}
