#pragma once

#include "common/String.h"

namespace Common
{
namespace Filesystem
{

// What a copy in progress tells its observer, and how the observer stops it.
// Called on the thread that performs the copy.
class CopyProgress
{
public:
    virtual ~CopyProgress() {}

    // Asked before every file and folder; false ends the copy there.
    virtual bool proceed() = 0;
    // A file copy begins; `source` is the path of the file being read.
    virtual void FileStarted(string const& source) = 0;
    // `count` more bytes of the current file have been written.
    virtual void BytesCopied(unsigned long long count) = 0;
};

} // namespace Filesystem
} // namespace Common
