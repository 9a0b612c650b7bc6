// soc_self_check.c: made by Veldmap from the description of soc.xml. Do not edit.
//
// It holds no code. It compiles when the compiler makes of the headers what the description says: offsets, sizes,
// addresses, masks and values, all numbers worked out from the description and not from the text of the headers. So
// it is for the compiler of the target, with its options, and for widths of pointers and enums that are the target's:
//
//     cc -std=c11 -fsyntax-only -I. -Isub soc_self_check.c
//
// The words that the headers leave to the project come from the headers' own includes, from -include words.h, or from
// -DVELDMAP_SELF_CHECK_PRELUDE='"words.h"'. A failing assertion names the path and the number of the description.
//
// Not asserted:
//     later macros of one name in a type, which the header comments out: 2
//     members that the header comments out or leaves out: arrays of none, gaps and memories of no bytes: 1
//     fields of C bit-field structures: C has no offset of them, the structure's size is asserted: 2
//     values of pointer macros, which KSEG1 decides; those of modules are asserted to point to what has the right size: 1
//     ranges, which headers do not have: 1
//     C texts that stand in a header as the description has them: 1

#ifdef VELDMAP_SELF_CHECK_PRELUDE
#include VELDMAP_SELF_CHECK_PRELUDE
#endif

#include "soc.h"
#include "sub/lib.h"

#ifdef __GNUC__
#define VELDMAP_ASSERT __extension__ _Static_assert
#define VELDMAP_OFFSET(type, member) __builtin_offsetof(type, member)
#else
#define VELDMAP_ASSERT _Static_assert
#define VELDMAP_OFFSET(type, member) ((unsigned long)&((type *)0)->member)
#endif
#define VELDMAP_SIZE(type, member) sizeof(((type *)0)->member)
#define VELDMAP_IS(macro, number) ((unsigned long long)((macro) | 0) == (number))
#define VELDMAP_IS_WORD(macro, number) \
    (VELDMAP_IS(macro, number) || VELDMAP_IS(macro, (number) | 0xFFFFFFFF00000000ull))

VELDMAP_ASSERT((unsigned char)-1 == 255, "a byte must have 8 bits");

// ---- soc.h
VELDMAP_ASSERT(VELDMAP_IS(COUNT, 0x3u), "COUNT must be 3");
VELDMAP_ASSERT(VELDMAP_IS_WORD(MINUS, 0xFFFFFFFBu), "MINUS must be -5");
VELDMAP_ASSERT(VELDMAP_IS(MODE_OFF, 0x0u), "mode.MODE_OFF must be 0");
VELDMAP_ASSERT(VELDMAP_IS(MODE_ON, 0x7u), "mode.MODE_ON must be 7");
VELDMAP_ASSERT(sizeof(HWP_UART_T) == 60u, "$UART0: size must be 60");
VELDMAP_ASSERT(VELDMAP_OFFSET(HWP_UART_T, ctrl) == 0x0u, "$UART0.ctrl: offset must be 0x0");
VELDMAP_ASSERT(VELDMAP_SIZE(HWP_UART_T, ctrl) == 4u, "$UART0.ctrl: size must be 4");
VELDMAP_ASSERT(VELDMAP_OFFSET(HWP_UART_T, Reserved_00000004) == 0x4u, "$UART0.Reserved_00000004_64: offset must be 0x4");
VELDMAP_ASSERT(VELDMAP_SIZE(HWP_UART_T, Reserved_00000004) == 8u, "$UART0.Reserved_00000004_64: size must be 8");
VELDMAP_ASSERT(VELDMAP_OFFSET(HWP_UART_T, half) == 0xCu, "$UART0.half: offset must be 0xC");
VELDMAP_ASSERT(VELDMAP_SIZE(HWP_UART_T, half) == 2u, "$UART0.half: size must be 2");
VELDMAP_ASSERT(VELDMAP_OFFSET(HWP_UART_T, lower) == 0xCu, "$UART0.half low half: offset must be 0xC");
VELDMAP_ASSERT(VELDMAP_SIZE(HWP_UART_T, lower) == 1u, "$UART0.half low half: size must be 1");
VELDMAP_ASSERT(VELDMAP_OFFSET(HWP_UART_T, upper) == 0xDu, "$UART0.half high half: offset must be 0xD");
VELDMAP_ASSERT(VELDMAP_SIZE(HWP_UART_T, upper) == 1u, "$UART0.half high half: size must be 1");
VELDMAP_ASSERT(VELDMAP_OFFSET(HWP_UART_T, Reserved_0000000E) == 0xEu, "$UART0.Reserved_0000000E_16: offset must be 0xE");
VELDMAP_ASSERT(VELDMAP_SIZE(HWP_UART_T, Reserved_0000000E) == 2u, "$UART0.Reserved_0000000E_16: size must be 2");
VELDMAP_ASSERT(VELDMAP_OFFSET(HWP_UART_T, chan) == 0x10u, "$UART0.chan: offset must be 0x10");
VELDMAP_ASSERT(VELDMAP_SIZE(HWP_UART_T, chan) == 12u, "$UART0.chan: size must be 12");
VELDMAP_ASSERT(VELDMAP_SIZE(HWP_UART_T, chan[0]) == 4u, "$UART0.chan[0]: size must be 4");
VELDMAP_ASSERT(VELDMAP_OFFSET(HWP_UART_T, ch) == 0x1Cu, "$UART0.ch: offset must be 0x1C");
VELDMAP_ASSERT(VELDMAP_SIZE(HWP_UART_T, ch) == 16u, "$UART0.ch: size must be 16");
VELDMAP_ASSERT(VELDMAP_SIZE(HWP_UART_T, ch[0]) == 8u, "$UART0.ch[0]: size must be 8");
VELDMAP_ASSERT(VELDMAP_OFFSET(HWP_UART_T, ch[0].a) == 0x1Cu, "$UART0.ch[0].a: offset must be 0x1C");
VELDMAP_ASSERT(VELDMAP_SIZE(HWP_UART_T, ch[0].a) == 4u, "$UART0.ch[0].a: size must be 4");
VELDMAP_ASSERT(VELDMAP_OFFSET(HWP_UART_T, ch[0].b) == 0x20u, "$UART0.ch[0].b: offset must be 0x20");
VELDMAP_ASSERT(VELDMAP_SIZE(HWP_UART_T, ch[0].b) == 4u, "$UART0.ch[0].b: size must be 4");
VELDMAP_ASSERT(VELDMAP_OFFSET(HWP_UART_T, mem) == 0x2Cu, "$UART0.mem: offset must be 0x2C");
VELDMAP_ASSERT(VELDMAP_SIZE(HWP_UART_T, mem) == 16u, "$UART0.mem: size must be 16");
VELDMAP_ASSERT(VELDMAP_IS_WORD(REG_UART0_BASE, 0xC0000000u), "$UART0: REG_UART0_BASE must be 0xC0000000");
VELDMAP_ASSERT(sizeof(*hwp_uart0) == 60u, "$UART0: size of *hwp_uart0 must be 60");
VELDMAP_ASSERT(VELDMAP_IS(UART_ENABLE, 0x1u), "$UART0.ctrl.enable: UART_ENABLE must be 0x1");
VELDMAP_ASSERT(VELDMAP_IS(UART_SPEED(0xFFFFFFFFu), 0xEu), "$UART0.ctrl.speed: UART_SPEED(0xFFFFFFFFu) must be 0xE");
VELDMAP_ASSERT(VELDMAP_IS(UART_SPEED(1u), 0x2u), "$UART0.ctrl.speed: UART_SPEED(1) must be 0x2");
VELDMAP_ASSERT(VELDMAP_IS(UART_SPEED_MASK, 0xEu), "$UART0.ctrl.speed: UART_SPEED_MASK must be 0xE");
VELDMAP_ASSERT(VELDMAP_IS(UART_SPEED_SHIFT, 0x1u), "$UART0.ctrl.speed: UART_SPEED_SHIFT must be 0x1");
VELDMAP_ASSERT(VELDMAP_IS(UART_SPEED_FAST, 0xAu), "$UART0.ctrl.speed: UART_SPEED_FAST must be 0xA");
VELDMAP_ASSERT(VELDMAP_IS(UART_X, 0x10u), "$UART0.ctrl.x: UART_X must be 0x10");
VELDMAP_ASSERT(VELDMAP_IS(UART_Y, 0x40u), "$UART0.ctrl.y: UART_Y must be 0x40");
VELDMAP_ASSERT(VELDMAP_IS_WORD(UART_TOP, 0x80000000u), "$UART0.ctrl.top: UART_TOP must be 0x80000000");
VELDMAP_ASSERT(VELDMAP_IS(UART_G(0xFFFFFFFFu), 0x50u), "$UART0.ctrl.g: UART_G(0xFFFFFFFFu) must be 0x50");
VELDMAP_ASSERT(VELDMAP_IS(UART_G(1u), 0x10u), "$UART0.ctrl.g: UART_G(1) must be 0x10");
VELDMAP_ASSERT(VELDMAP_IS(UART_G_MASK, 0x50u), "$UART0.ctrl.g: UART_G_MASK must be 0x50");
VELDMAP_ASSERT(VELDMAP_IS(UART_G_SHIFT, 0x4u), "$UART0.ctrl.g: UART_G_SHIFT must be 0x4");
VELDMAP_ASSERT(VELDMAP_IS(UART_W(0xFFFFFFFFu), 0x1F8u), "$UART0.half.w: UART_W(0xFFFFFFFFu) must be 0x1F8");
VELDMAP_ASSERT(VELDMAP_IS(UART_W(1u), 0x8u), "$UART0.half.w: UART_W(1) must be 0x8");
VELDMAP_ASSERT(VELDMAP_IS(UART_F, 0x1u), "$UART0.ch[0].a.f: UART_F must be 0x1");
VELDMAP_ASSERT(sizeof(NODE_T) == 12u, "$NODE: size must be 12");
VELDMAP_ASSERT(VELDMAP_OFFSET(NODE_T, next) == 0x0u, "$NODE.next: offset must be 0x0");
VELDMAP_ASSERT(VELDMAP_SIZE(NODE_T, next) == 4u, "$NODE.next: size must be 4");
VELDMAP_ASSERT(VELDMAP_OFFSET(NODE_T, len) == 0x4u, "$NODE.len: offset must be 0x4");
VELDMAP_ASSERT(VELDMAP_SIZE(NODE_T, len) == 2u, "$NODE.len: size must be 2");
VELDMAP_ASSERT(VELDMAP_OFFSET(NODE_T, data) == 0x6u, "$NODE.data: offset must be 0x6");
VELDMAP_ASSERT(VELDMAP_SIZE(NODE_T, data) == 6u, "$NODE.data: size must be 6");
VELDMAP_ASSERT(VELDMAP_SIZE(NODE_T, data[0]) == 1u, "$NODE.data[0]: size must be 1");
VELDMAP_ASSERT(VELDMAP_IS(REG_NODE_BASE, 0x20000000u), "$NODE: REG_NODE_BASE must be 0x20000000");
VELDMAP_ASSERT(sizeof(FLAGS_T) == 4u, "flags: size must be 4");
VELDMAP_ASSERT(VELDMAP_IS(FLAGS_A, 0x1u), "flags.a: FLAGS_A must be 0x1");
VELDMAP_ASSERT(VELDMAP_IS(FLAGS_B(0xFFFFFFFFu), 0x6u), "flags.b: FLAGS_B(0xFFFFFFFFu) must be 0x6");
VELDMAP_ASSERT(VELDMAP_IS(FLAGS_B(1u), 0x2u), "flags.b: FLAGS_B(1) must be 0x2");
VELDMAP_ASSERT(sizeof(LIST_T) == 4u, "list: size must be 4");
VELDMAP_ASSERT(sizeof(BANK_T) == 6u, "bank: size must be 6");

// ---- sub/lib.h
VELDMAP_ASSERT(VELDMAP_IS(LIB, 0x2u), "LIB must be 2");
