#pragma once

namespace Common
{

// Empty marker base of the foundation's value types. Trivial and non-virtual:
// deriving from it adds neither size nor a vtable.
class Signature
{
public:
    Signature() {}
    ~Signature() {}
};

} // namespace Common
