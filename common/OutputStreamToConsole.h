#pragma once

#include "common/OutputStream.h"

namespace Common
{

// Writes to the standard output through the C library's stream, flushed after
// every text so that it interleaves with the host's own output. The text is
// written as data: a "%" in it is printed as "%", never read as a format.
class OutputStreamToConsole : public OutputStream
{
public:
    bool isOpen() const override { return true; }
    bool Accept(char const* bytes, unsigned length) override;
};

} // namespace Common
