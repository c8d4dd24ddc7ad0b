#pragma once

namespace Common
{
namespace Synchronization
{

// The work that a Thread runs: Run() is called once on the new thread.
//
// Run is the third entry of the interface's virtual table: under the C++ ABI
// of this platform the virtual destructor takes the first two (the complete-
// object and the deleting destructor). Keep any new virtual function after
// Run so that it stays there.
//
// Run must not let an exception escape (it would end the process), and the
// object must outlive the Thread that runs it.
class Threadable
{
public:
    virtual ~Threadable() {}
    virtual void Run() = 0;
};

} // namespace Synchronization
} // namespace Common
