#ifndef _SOC_ASM_H_
#define _SOC_ASM_H_

//THIS FILE HAS BEEN GENERATED WITH VELDSPECTOR. PLEASE EDIT WITH CARE !

#ifndef VC_ASM
#error "You are trying to use in a normal C code the assembly H description of 'soc'."
#endif

#if A == 1
    #include "a_asm.h"
#elif 0
    #include "b_asm.h"
#endif
#include "plain_asm.h"

#define A                                        (0)


#endif
