// SPDX-License-Identifier: ISC
/* The recordings as read-only data. The assembler finds the files in the include path. x86-64 puts no
   underscore before C names on either system. */

#ifdef _WIN32
        .section .rdata, "dr"
#else
        .section .rodata, "a", @progbits
        .hidden qlxHornSlow1, qlxHornSlow2, qlxHornFast, qlxDrumSlow, qlxDrumFast, qlxStartStop
#endif
        .globl  qlxHornSlow1, qlxHornSlow2, qlxHornFast, qlxDrumSlow, qlxDrumFast, qlxStartStop

        .balign 64
qlxHornSlow1:
        .incbin "horn_slow_1.f32"
        .balign 64
qlxHornSlow2:
        .incbin "horn_slow_2.f32"
        .balign 64
qlxHornFast:
        .incbin "horn_fast.f32"
        .balign 64
qlxDrumSlow:
        .incbin "drum_slow.f32"
        .balign 64
qlxDrumFast:
        .incbin "drum_fast.f32"
        .balign 64
qlxStartStop:
        .incbin "start_stop.f32"

#ifndef _WIN32
        .section .note.GNU-stack, "", @progbits
#endif
