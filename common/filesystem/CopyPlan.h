#pragma once

#include "common/List.h"
#include "common/Pair.h"
#include "common/String.h"

namespace Common
{
namespace Filesystem
{

class CopyProgress;
struct _MATCH;

// The files and folders that one copy will create, found by walking the
// source before anything is written (so totals are known up front, and a
// copy whose destination lies inside its source cannot chase its own output).
//
// What the paths mean (backslashes count as "/", a trailing "/" is ignored):
// - `source` names a file or a folder; a folder is copied with everything in
//   it. A "*" in the last name ("/media/drivers/*.inf") makes it a wildcard:
//   every file and folder of that folder whose name matches is copied into
//   the destination folder, which is created when missing. The matching rules
//   are those of _isWild and _isMatch (a source without "/" is no wildcard).
// - `destination` that is an existing folder receives the source under its
//   own last name; otherwise `destination` is the new name of the copy, and
//   its missing parent folders are created.
// Symbolic links are followed; a link back to a folder that is being walked
// is skipped, so link loops end. Existing files are replaced; existing folders
// are merged into. Only regular files and folders are copied: devices, FIFOs
// and sockets are not read.
class CopyPlan
{
public:
    // One folder to create, or one file to copy from `source` to `target`.
    struct _COPY_STEP
    {
        bool folder;
        string source;
        string target;
        unsigned long long size;
    };

    CopyPlan(string const& source, string const& destination);

    list<_COPY_STEP> const& steps() const { return m_steps; }
    unsigned long long totalFiles() const { return m_totalFiles; }
    unsigned long long totalBytes() const { return m_totalBytes; }
    // False when some of the source cannot be copied: it is missing, a
    // wildcard matched nothing, a folder cannot be listed, a link is dangling,
    // an entry is no regular file or folder, or the source's last name is "."
    // or ".." while the destination is an existing folder.
    bool complete() const { return m_complete; }

    // Creates the folders and copies the files in order, telling `progress`
    // (may be null) as it goes. True when the plan was complete and every
    // step succeeded; false also when `progress` ended the copy early. A file
    // is never copied onto itself.
    bool Perform(CopyProgress* progress) const;

private:
    void planMatches(string const& pattern, _MATCH const& match, string const& destination);
    void planFolderFor(string const& path);
    void planEntry(string const& source, string const& target);
    void planFolder(string const& source, string const& target, unsigned long long device,
                    unsigned long long inode);
    void addStep(bool folder, string const& source, string const& target, unsigned long long size);

    list<_COPY_STEP> m_steps;
    // Device and inode of the source folders being walked, innermost first.
    list<pair<unsigned long long, unsigned long long>> m_walking;
    unsigned long long m_totalFiles;
    unsigned long long m_totalBytes;
    bool m_complete;
};

} // namespace Filesystem
} // namespace Common
