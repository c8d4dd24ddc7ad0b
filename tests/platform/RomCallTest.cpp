#include "platform/RomCall.h"

#include <gtest/gtest.h>

// Stand-ins for ROM code, in the process's own memory: entering them needs
// no privilege, as they touch no port. The far-return one works on every
// register and sets the carry flag; the interrupt-return one sets the carry
// in the flags that the call pushed, as an interrupt handler does.
extern "C" void fake_rom_far_return();
extern "C" void fake_rom_interrupt_return();
asm(".text\n"
    "fake_rom_far_return:\n"
    "  xchgl %eax, %ebx\n"
    "  addl $1, %ecx\n"
    "  notl %edx\n"
    "  movl %esi, %edi\n"
    "  movl $0x5A5A5A5A, %esi\n"
    "  stc\n"
    "  lret\n"
    "fake_rom_interrupt_return:\n"
    "  movb $0x8A, %ah\n"
    "  orl $1, 8(%esp)\n"
    "  iret\n");

namespace
{
RomCallRegisters zeroed()
{
    RomCallRegisters block = {};
    return block;
}
} // namespace

TEST(RomCall, LoadsAndStoresTheWholeRegisterBlockInBothCallModes)
{
    static_assert(sizeof(RomCallRegisters) == 32, "the assembly relies on this layout");
    RomCallRegisters block = zeroed();
    block.eax = 0x11111111;
    block.ebx = 0x22222222;
    block.ecx = 0x33333333;
    block.edx = 0x0F0F0F0F;
    block.esi = 0x55555555;
    block.edi = 0x66666666;
    rom_call(&block, reinterpret_cast<void*>(&fake_rom_far_return), 2);
    EXPECT_EQ(0x22222222u, block.eax);
    EXPECT_EQ(0x11111111u, block.ebx);
    EXPECT_EQ(0x33333334u, block.ecx);
    EXPECT_EQ(0xF0F0F0F0u, block.edx);
    EXPECT_EQ(0x5A5A5A5Au, block.esi);
    EXPECT_EQ(0x55555555u, block.edi);
    EXPECT_EQ(1u, block.eflags & 1u) << "carry";
    EXPECT_NE(0, block.ds);
    EXPECT_EQ(block.ds, block.es) << "ES is loaded from DS for the ROM";

    block = zeroed();
    block.eax = 0xD8A4;
    rom_call(&block, reinterpret_cast<void*>(&fake_rom_interrupt_return), 1);
    EXPECT_EQ(0x8A, block.ah());
    EXPECT_EQ(0xA4, block.al());
    EXPECT_EQ(1u, block.eflags & 1u);
}
