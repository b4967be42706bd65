// SPDX-License-Identifier: ISC
/* The editor's glyphs as read-only data. The assembler finds the files in the include path. */

#ifdef _WIN32
        .section .rdata, "dr"
#else
        .section .rodata, "a", @progbits
        .hidden qlxEditorGlyphPlaces, qlxEditorGlyphs
#endif
        .globl  qlxEditorGlyphPlaces, qlxEditorGlyphs

        /* Where each scale's glyphs begin, from the first, then the further ones, and where these end. */
        .balign 16
qlxEditorGlyphPlaces:
        .long   0, .Lglyphs1_5 - qlxEditorGlyphs, .Lglyphs2 - qlxEditorGlyphs
        .long   .Lglyphs3 - qlxEditorGlyphs, .LglyphsOthers - qlxEditorGlyphs
        .long   .LglyphsEnd - qlxEditorGlyphs

        .balign 16
qlxEditorGlyphs:
        .incbin "editor_glyphs.bin"
.Lglyphs1_5:
        .incbin "editor_glyphs_1_5.bin"
.Lglyphs2:
        .incbin "editor_glyphs_2.bin"
.Lglyphs3:
        .incbin "editor_glyphs_3.bin"
.LglyphsOthers:
        .incbin "editor_glyphs_others.bin"
.LglyphsEnd:

#ifndef _WIN32
        .section .note.GNU-stack, "", @progbits
#endif
