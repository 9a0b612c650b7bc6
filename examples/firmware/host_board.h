#pragma once

#include <stdint.h>

/// The registers of the board in a buffer, for tests on the machine that compiles them: included in front of everything
/// else, this says where the addresses of the description lie.

#define BOARD_FIRST 0x40000000
#define BOARD_BYTES 0x30000

extern uint32_t board[BOARD_BYTES / 4];

#define KSEG1(address) (board + ((address)-BOARD_FIRST) / 4)
