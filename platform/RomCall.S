/* void rom_call(RomCallRegisters* block, void* entry, int mode)
 *
 * Block layout: eax 0, ebx 4, ecx 8, edx 12, esi 16, edi 20, ds 24 (16 bits),
 * es 26 (16 bits), eflags 28. Every general register, the flags and ES are
 * restored before returning; ES is loaded from DS for the ROM. */

        .text
        .globl  rom_call
        .type   rom_call, @function
rom_call:
        pushl   %ebp
        movl    %esp, %ebp
        pushfl
        pushal
        pushl   %es
        movw    %ds, %ax
        movw    %ax, %es

        pushl   8(%ebp)                 /* block: 4(%esp) once entry is pushed */
        pushl   12(%ebp)                /* entry: (%esp) */
        movl    16(%ebp), %ecx          /* mode */
        movl    4(%esp), %eax

        movl    4(%eax), %ebx
        movl    12(%eax), %edx
        movl    16(%eax), %esi
        movl    20(%eax), %edi
        cmpl    $1, %ecx
        je      .Linterrupt_return
        cmpl    $2, %ecx
        je      .Lfar_return

        /* Mode 3: raise the SMI. AL and DX carry the port access; the poll for
         * bit 0x80 to clear gives up after 2^24 reads rather than hang. */
        movl    8(%eax), %ecx
        movl    (%eax), %eax
        pushl   %eax
        pushl   %edx
        movw    $0xCD4, %dx
        inb     %dx, %al
        orb     $0x80, %al
        outb    %al, %dx
        pushl   $0x1000000
1:      inb     %dx, %al
        testb   $0x80, %al
        jz      2f
        decl    (%esp)
        jnz     1b
2:      addl    $4, %esp
        popl    %edx
        popl    %eax
        jmp     .Lstore

.Linterrupt_return:
        movl    8(%eax), %ecx
        movl    (%eax), %eax
        pushfl
        pushl   %cs
        call    *8(%esp)
        jmp     .Lstore

.Lfar_return:
        movl    8(%eax), %ecx
        movl    (%eax), %eax
        pushl   %cs
        call    *4(%esp)

.Lstore:
        pushfl                          /* flags first: nothing below changes them */
        pushl   %eax
        movl    12(%esp), %eax          /* block */
        movl    %ebx, 4(%eax)
        movl    %ecx, 8(%eax)
        movl    %edx, 12(%eax)
        movl    %esi, 16(%eax)
        movl    %edi, 20(%eax)
        movw    %ds, 24(%eax)
        movw    %es, 26(%eax)
        popl    %ebx
        movl    %ebx, (%eax)
        popl    %ebx
        movl    %ebx, 28(%eax)

        addl    $8, %esp                /* entry, block */
        popl    %es
        popal
        popfl
        popl    %ebp
        ret
        .size   rom_call, .-rom_call

        .section .note.GNU-stack, "", @progbits
