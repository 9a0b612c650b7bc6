#ifndef _UART_ASM_H_
#define _UART_ASM_H_

//THIS FILE HAS BEEN GENERATED WITH VELDSPECTOR. PLEASE EDIT WITH CARE !

#ifndef VC_ASM
#error "You are trying to use in a normal C code the assembly H description of 'uart'."
#endif

#include "regdef_asm.h"

/// Number of channels
#define UART_NB_CHAN                             (2)
#define UART_MODE_OFF                            (0)
#define UART_MODE_ON                             (1)

//==============================================================================
// uart_mode
//------------------------------------------------------------------------------
/// 
//==============================================================================



//==============================================================================
// uart
//------------------------------------------------------------------------------
/// UART registers
//==============================================================================
#define REG_UART0_BASE              0x01A00000

#define REG_UART0_BASE_HI           BASE_HI(REG_UART0_BASE)
#define REG_UART0_BASE_LO           BASE_LO(REG_UART0_BASE)

#define REG_UART0_CTRL              REG_UART0_BASE_LO + 0x00000000
#define REG_UART0_CHAN_0            REG_UART0_BASE_LO + 0x00000008
#define REG_UART0_CHAN_1            REG_UART0_BASE_LO + 0x0000000C
#define REG_UART0FIFO_DATA          REG_UART0_BASE_LO + 0x00000010
#define REG_UART0FIFO_LEVEL         REG_UART0_BASE_LO + 0x00000011

//ctrl
#define UART_ENABLE                 (1<<0)
#define UART_SPEED(n)               (((n)&7)<<1)
#define UART_SPEED_SLOW             (0<<1)
#define UART_SPEED_FAST             (5<<1)




#endif
