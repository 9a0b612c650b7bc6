//==============================================================================
//                                                                              
//  This file was made by a program from the description of a chip or of        
//  software. It describes that chip or software as its description does,       
//  and claims nothing beyond it.                                               
//  It comes without any warranty, neither that it is free of faults nor that   
//  it is fit for a particular purpose. Who uses it checks it for that use.     
//  The rights in the description, and the terms on which it was given,         
//  extend to this file.                                                        
//                                                                              
//==============================================================================
//                                                                              
//    THIS FILE WAS GENERATED FROM ITS CORRESPONDING XML VERSION WITH VELDMAP.  
//                                                                              
//                       !!! PLEASE DO NOT EDIT !!!                             
//                                                                              
//  $HeadURL$                                                                   
//	$Author$                                                                    
//	$Date$                                                                      
//	$Revision$                                                                  
//                                                                              
//==============================================================================
//
/// @file
/// UART file
//
//==============================================================================

#ifndef _UART_H_
#define _UART_H_

#ifdef VC_ASM
#error "You are trying to use in an assembly code the normal H description of 'uart'."
#endif


#include "regdef.h"

// =============================================================================
//  MACROS
// =============================================================================
/// Number of channels
#define UART_NB_CHAN                             (2)

typedef enum {
    UART_MODE_OFF                               = 0x00000000,
    UART_MODE_ON                                = 0x00000001
} UART_MODE_T;


// =============================================================================
//  TYPES
// =============================================================================
// ============================================================================
// UART_T
// -----------------------------------------------------------------------------
/// UART registers
// =============================================================================
#define REG_UART0_BASE              0x01A00000


typedef volatile struct
{
    /// Control
    REG32                          ctrl;                         //0x00000000
    REG32 Reserved_00000004;                    //0x00000004
    REG32                          chan[UART_NB_CHAN];           //0x00000008
    struct
    {
        UINT8                      data;                         //0x00000010
        UINT8                      level;                        //0x00000011
    } fifo;
} HWP_UART_T;

#define hwp_uart0                   ((HWP_UART_T*) KSEG1(REG_UART0_BASE))


//ctrl
#define UART_ENABLE                 (1<<0)
#define UART_SPEED(n)               (((n)&7)<<1)
#define UART_SPEED_SLOW             (0<<1)
#define UART_SPEED_FAST             (5<<1)





#endif
