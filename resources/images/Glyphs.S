// SPDX-License-Identifier: ISC
/* The editor's glyphs as read-only data. The assembler finds the file in the include path. */

#ifdef _WIN32
        .section .rdata, "dr"
#else
        .section .rodata, "a", @progbits
        .hidden qlxEditorGlyphs, qlxEditorGlyphsEnd
#endif
        .globl  qlxEditorGlyphs, qlxEditorGlyphsEnd

        .balign 16
qlxEditorGlyphs:
        .incbin "editor_glyphs.bin"
qlxEditorGlyphsEnd:

#ifndef _WIN32
        .section .note.GNU-stack, "", @progbits
#endif
