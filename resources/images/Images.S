// SPDX-License-Identifier: ISC
/* The editor's images as read-only data, where libraries have no resources: a directory of (number, distance of the file from the
   directory, length), then the files: two device-independent bitmaps, packed images all others, and all twice as large by number + 100000. The assembler finds them in the include path. */

        .section .rodata, "a", @progbits
        .hidden qlxImageDirectory, qlxImageDirectoryEnd
        .globl  qlxImageDirectory, qlxImageDirectoryEnd

        .macro  forEachImage do
        .irp    number, 989, 2002, 2003, 2004, 2005, 2008, 2009, 2010, 2013, 3999, 4000, 4001, 4002
        \do     \number
        .endr
        .irp    number, 4003, 4004, 4005, 19899, 19990, 19991, 19992, 19993, 19994, 19995, 19996
        \do     \number
        .endr
        .irp    number, 19997, 19998, 19999
        \do     \number
        .endr
        .endm

        .macro  entry number
        .long   \number
        .long   .Limage\number - qlxImageDirectory
        .long   .Lend\number - .Limage\number
        .endm

        .macro  file number
.Limage\number:
        .if     \number == 19899 || \number == 19990
        .incbin "resources/images/\number\().bmp"
        .else
        .incbin "\number\().img"
        .endif
.Lend\number:
        .endm

        .macro  large_entry number
        .long   \number + 100000
        .long   .Llarge\number - qlxImageDirectory
        .long   .LlargeEnd\number - .Llarge\number
        .endm

        .macro  large_file number
.Llarge\number:
        .incbin "2x/\number\().img"
.LlargeEnd\number:
        .endm

        .balign 16
qlxImageDirectory:
        forEachImage entry
        forEachImage large_entry
qlxImageDirectoryEnd:
        forEachImage file
        forEachImage large_file

        .section .note.GNU-stack, "", @progbits
