// The words that generated headers use and leave to their user. Include it in front of them:
//
//     #include <veldmap/types.h>
//     #include "soc.h"
//
// A project that has a word already defines it before it includes this file, as a macro: #define REG32 my_register_t,
// or for a type of the same name #define REG32 REG32.
//
// For C99, C++ and assembly, and for compilers whose pointers have 32 or 64 bits.

#ifndef VELDMAP_TYPES_H
#define VELDMAP_TYPES_H

#ifdef __ASSEMBLER__

// Assembly headers want it to be defined, C headers don't.
#ifndef VC_ASM
#define VC_ASM 1
#endif

// The halves of an address: its upper and its lower 16 bits, both without a sign.
#ifndef BASE_HI
#define BASE_HI(address) (((address) >> 16) & 0xFFFF)
#endif
#ifndef BASE_LO
#define BASE_LO(address) ((address)&0xFFFF)
#endif

// Where the processor finds an address: there.
#ifndef KSEG1
#define KSEG1(address) (address)
#endif

// 1, moved up by the lowest five bits of n.
#ifndef EXP2
#define EXP2(n) (1 << ((n)&31))
#endif

#else // C and C++

#include <stdint.h>

// Registers of hardware: each access in the source is one on the bus.
#ifndef REG32
typedef volatile uint32_t REG32;
#define REG32 REG32
#endif
#ifndef REG16
typedef volatile uint16_t REG16;
#define REG16 REG16
#endif
#ifndef REG8
typedef volatile uint8_t REG8;
#define REG8 REG8
#endif

// The same for an alias of reg, and of ireg.
#ifndef REG_T
typedef volatile uint32_t REG_T;
#define REG_T REG_T
#endif
#ifndef IREG_T
typedef volatile uint8_t IREG_T;
#define IREG_T IREG_T
#endif

// Integers of software.
#ifndef UINT32
typedef uint32_t UINT32;
#define UINT32 UINT32
#endif
#ifndef UINT16
typedef uint16_t UINT16;
#define UINT16 UINT16
#endif
#ifndef UINT8
typedef uint8_t UINT8;
#define UINT8 UINT8
#endif
#ifndef UINT
typedef uint32_t UINT;
#define UINT UINT
#endif
#ifndef INT32
typedef int32_t INT32;
#define INT32 INT32
#endif
#ifndef INT16
typedef int16_t INT16;
#define INT16 INT16
#endif
#ifndef INT8
typedef int8_t INT8;
#define INT8 INT8
#endif
#ifndef INT
typedef int32_t INT;
#define INT INT
#endif

// One byte: 0 is false.
#ifndef BOOL
typedef uint8_t BOOL;
#define BOOL BOOL
#endif

// What pointers lead to that know no more of it: anything, or bytes.
#ifndef VOID
typedef void VOID;
#define VOID VOID
#endif
#ifndef MEMORY
typedef uint8_t MEMORY;
#define MEMORY MEMORY
#endif

// Where the processor finds an address of the description: there. Processors that reach registers through a window of
// their own, and tests that keep them in a buffer, define it otherwise.
#ifndef KSEG1
#define KSEG1(address) ((uintptr_t)(address))
#endif

// exp2(n) of a description: 1, moved up by the lowest five bits of n, as a number of 32 bits with a sign. It may stand
// behind #if too.
#ifndef EXP2
#define EXP2(n) ((((n)&31) == 31) ? (-2147483647 - 1) : (1 << (((n)&31) % 31)))
#endif

#endif // __ASSEMBLER__

#endif // VELDMAP_TYPES_H
