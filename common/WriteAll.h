#pragma once

namespace Common
{

// Writes all `length` bytes to the descriptor `fd`, resuming after partial
// writes and interrupted calls. False when a write fails or writes nothing;
// part of the bytes may have been written by then.
bool writeAll(int fd, char const* bytes, unsigned length);

} // namespace Common
