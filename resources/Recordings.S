// SPDX-License-Identifier: ISC
/* The packed recordings as read-only data. The assembler finds the files in the include path. x86-64 puts no
   underscore before C names on either system. */

#ifdef _WIN32
        .section .rdata, "dr"
#else
        .section .rodata, "a", @progbits
        .hidden qlxRecordingPlaces, qlxRecordings
#endif
        .globl  qlxRecordingPlaces, qlxRecordings

        /* Where each recording begins, from the first, and where the last one ends. */
        .balign 16
qlxRecordingPlaces:
        .long   0, .LhornSlow2 - qlxRecordings, .LhornFast - qlxRecordings, .LdrumSlow - qlxRecordings
        .long   .LdrumFast - qlxRecordings, .LstartStop - qlxRecordings, .LrecordingsEnd - qlxRecordings

        .balign 16
qlxRecordings:
        .incbin "horn_slow_1.rice"
.LhornSlow2:
        .incbin "horn_slow_2.rice"
.LhornFast:
        .incbin "horn_fast.rice"
.LdrumSlow:
        .incbin "drum_slow.rice"
.LdrumFast:
        .incbin "drum_fast.rice"
.LstartStop:
        .incbin "start_stop.rice"
.LrecordingsEnd:

#ifndef _WIN32
        .section .note.GNU-stack, "", @progbits
#endif
