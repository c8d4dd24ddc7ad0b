#pragma once

namespace Collection
{

// The embedded management processor ("wd100.nsp"). Only its detection is
// built so far.
class Warden100
{
public:
    // True when the processor answers Get Device ID. The first call on a
    // machine without one takes several seconds (the IPMI driver is loaded
    // and waited for); only a true answer is kept, so a false one costs that
    // again on every call.
    bool isSupported() const;
};

} // namespace Collection
