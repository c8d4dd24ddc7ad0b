#include "platform/PortInstructions.h"

extern "C"
{

    unsigned char inb(unsigned short port)
    {
        unsigned char value;
        __asm__ __volatile__("inb %w1, %b0" : "=a"(value) : "Nd"(port));
        return value;
    }

    unsigned short inw(unsigned short port)
    {
        unsigned short value;
        __asm__ __volatile__("inw %w1, %w0" : "=a"(value) : "Nd"(port));
        return value;
    }

    unsigned int inl(unsigned short port)
    {
        unsigned int value;
        __asm__ __volatile__("inl %w1, %0" : "=a"(value) : "Nd"(port));
        return value;
    }

    void outb(unsigned char value, unsigned short port)
    {
        __asm__ __volatile__("outb %b0, %w1" : : "a"(value), "Nd"(port));
    }

    void outw(unsigned short value, unsigned short port)
    {
        __asm__ __volatile__("outw %w0, %w1" : : "a"(value), "Nd"(port));
    }

    void outl(unsigned int value, unsigned short port)
    {
        __asm__ __volatile__("outl %0, %w1" : : "a"(value), "Nd"(port));
    }

} // extern "C"
