#pragma once

#include "common/List.h"
#include "common/String.h"

namespace Common
{
namespace Filesystem
{

// Free functions over path strings. Paths are compared case-sensitively;
// failures show only as false, 0 or an empty list. Functions that take the
// path by value clean it first: runs of "/" become one "/" (and remove and
// createDirectory also turn backslashes into "/").

// The whole file in `text`; true if the file could be opened and read. Only
// regular files are read (links followed): a folder, a FIFO (which would wait
// for a writer) or a device (which may never end) gives false, at once, and so
// does a file longer than InputStreamFromFile::kMaxWholeFile (64 MiB). Every
// file served, included or parsed on a request's behalf is read here.
bool getContents(string const& path, string& text);

// True if the path opens for reading. A folder opens too, so this is true for
// an existing, readable folder; use isDirectory to tell them apart. Opening
// never waits (a FIFO without a writer answers at once).
bool isFile(string const& path);

// True for the empty path; otherwise true if the path lists as a folder.
bool isDirectory(string const& path);

// True if the path is a symbolic link (dangling or not).
bool isSymbolicLink(string const& path);

// The size in bytes, following links; 0 if the path cannot be examined.
long long getFileSize(string const& path);

// Names (without the folder) of the folder's entries, following links, in the
// order the folder lists them; "." and ".." never appear; empty for a folder
// that cannot be listed. The file list takes every entry whose mode has the
// regular-file bit 0x8000 (sockets too), the folder list every entry with the
// bit 0x4000 (block devices and sockets too).
list<string> getFileList(string folder);
list<string> getDirectoryList(string folder);

// Removes one entry (a file, a link, or an empty folder); true on success.
bool deleteFile(string path);
// Removes an empty folder; true on success.
bool deleteDirectory(string path);

// Removes a file, or a folder with everything in it. Beware: a folder that is
// readable opens as a file (see isFile), so it is handed to deleteFile and
// removed only when empty; only an unreadable folder is emptied entry by entry.
bool remove(string path);

// Creates a folder (mode 0755) and any missing parents. True when the folder
// was created or already existed, and also when the last mkdir failed for
// another reason; false when a parent is still not a folder after the attempt
// to create it (a regular file in the way, a read-only parent folder).
bool createDirectory(string path);

} // namespace Filesystem
} // namespace Common
