#pragma once

namespace Common
{
namespace System
{

// The non-volatile store of the management controller, reached through the
// controller's PCI configuration space (vendor 0x0E11) and guarded by its
// hardware semaphore at 0xE1, which serialises this process against the
// firmware and other agents.
//
// Process-wide state, not guarded by any lock: the controller's address
// (found once per process) and the nesting count of the semaphore. Use from
// one thread only.
class NVRAM
{
public:
    // Whether the controller exists. The first call probes every device of
    // buses 0..254 (a write/read-back of the scratch byte under the
    // semaphore, which is left as found); the answer is kept for the life of
    // the process, so later calls never touch the bus.
    static bool Supported();

    // Takes the semaphore, waiting up to 5 seconds for another holder to let
    // go; nested calls only count. False on time-out or a failed read.
    static bool LockSemaphore();
    // Undoes one LockSemaphore; the last one releases the semaphore. False
    // when nothing is held.
    static bool UnlockSemaphore();

    // Supported, LockSemaphore, the configuration access of the value's
    // width at `offset`, UnlockSemaphore: true only if every step succeeded.
    // A failed step ends the sequence at once, so a failed access keeps the
    // semaphore taken.
    static bool Read(const unsigned int& offset, unsigned char& value);
    static bool Read(const unsigned int& offset, unsigned short& value);
    static bool Read(const unsigned int& offset, unsigned int& value);
    static bool Write(const unsigned int& offset, const unsigned char& value);
    static bool Write(const unsigned int& offset, const unsigned short& value);
    static bool Write(const unsigned int& offset, const unsigned int& value);
};

} // namespace System
} // namespace Common
