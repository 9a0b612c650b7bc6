// What runs in front of main: the table of vectors, which the processor reads at address 0, and the way into main and
// out of it. For a Cortex-M processor without its interrupts.

#include <stdint.h>

// Where link.ld lays things: addresses, not numbers.
extern uint32_t stack_top[], data_begin[], data_end[], data_source[], bss_begin[], bss_end[];

int main(void);

/// Ends the run with a debugger or an emulator attached: a request to its host. Without one the processor stops.
static void leave(int status)
{
    register uint32_t operation __asm__("r0") = 0x18;                         // to exit
    register uint32_t reason __asm__("r1") = status == 0 ? 0x20026 : 0x20023; // as told, or with a fault
    __asm__ volatile("bkpt 0xAB" : : "r"(operation), "r"(reason) : "memory");
    for (;;) {
    }
}

static void reset(void)
{
    const uint32_t *source = data_source;
    for (uint32_t *at = data_begin; at != data_end; ++at)
        *at = *source++;
    for (uint32_t *at = bss_begin; at != bss_end; ++at)
        *at = 0;
    leave(main());
}

static void fault(void)
{
    leave(1);
}

typedef void (*Vector)(void);

struct Vectors {
    uint32_t *stack;
    Vector handlers[15]; // the first is where the processor begins, those behind it are faults
};

extern const struct Vectors vectors;
__attribute__((section(".vectors"), used))
const struct Vectors vectors = {stack_top, {reset, fault, fault, fault, fault, fault}};
