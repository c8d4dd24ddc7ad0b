#pragma once

// The raw x86 port instructions. Executing one without I/O privilege level 3
// kills the process with a protection fault: only the real backend calls
// them, and only after iopl(3) succeeded. Everything else reaches ports
// through Common::System::IO.
extern "C"
{
    unsigned char inb(unsigned short port);
    unsigned short inw(unsigned short port);
    unsigned int inl(unsigned short port);
    void outb(unsigned char value, unsigned short port);
    void outw(unsigned short value, unsigned short port);
    void outl(unsigned int value, unsigned short port);
}
