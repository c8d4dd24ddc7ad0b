#pragma once

#include "common/String.h"

namespace Common
{

// Opens `path` with `flags` (and `mode` when creating) as a regular file
// only: the descriptor, or -1 when the path cannot be opened or names
// anything else (a folder, a FIFO, a device, a socket). Every file the module
// reads or writes on a request's behalf is opened here, so that a FIFO cannot
// stall the host (the open never waits for the other end), a device such as
// /dev/zero cannot fill its memory, and a terminal never becomes the
// process's controlling terminal. The descriptor is close-on-exec, so no
// program the module runs inherits it.
//
// Beware: O_TRUNC and O_CREAT act before the type is known. Truncation does
// nothing to a FIFO or a device, but a file created here stays created.
int openRegularFile(string const& path, int flags, unsigned mode = 0644);

} // namespace Common
