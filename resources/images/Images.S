/* The editor's images and its font as read-only data, with a table of (number, first byte, end), the places
   counted from qlxImages and 0 for the end of the table. x86-64 puts no underscore before C names on either system. */

#define NUMBERS 989, 2002, 2003, 2004, 2005, 2008, 2009, 2010, 2013, 3999, 4000, 4001, 4002, 4003, 4004, 4005, \
  19899, 19990, 19991, 19992, 19993, 19994, 19995, 19996, 19997, 19998, 19999

#ifdef _WIN32
        .section .rdata, "dr"
#else
        .section .rodata, "a", @progbits
        .hidden qlxImages, qlxImageTable, qlxEditorFont, qlxEditorFontEnd
#endif
        .globl  qlxImages, qlxImageTable, qlxEditorFont, qlxEditorFontEnd

        .balign 64
qlxImages:
.irp number, NUMBERS
        .balign 8
.Limage\number:
        .incbin "\number\().png"
.LimageEnd\number:
.endr

        .balign 8
qlxImageTable:
.irp number, NUMBERS
        .long \number, .Limage\number - qlxImages, .LimageEnd\number - qlxImages
.endr
        .long 0

        .balign 64
qlxEditorFont:
        .incbin "LiberationSans-Regular.ttf"
qlxEditorFontEnd:

#ifndef _WIN32
        .section .note.GNU-stack, "", @progbits
#endif
