// SPDX-License-Identifier: ISC
/* The font of diagrams as read-only data. The assembler finds the file in the include path. */

#ifdef _WIN32
        .section .rdata, "dr"
#else
        .section .rodata, "a", @progbits
#endif
        .globl  qlxDiagramFont, qlxDiagramFontEnd

        .balign 16
qlxDiagramFont:
        .incbin "LiberationSans-Regular.ttf"
qlxDiagramFontEnd:

#ifndef _WIN32
        .section .note.GNU-stack, "", @progbits
#endif
