#pragma once

#include <QString>

#include <cstdint>

namespace Orrery {

/// Tells one state of a file on disk from another: which file it is, how long, and when it was last written.
struct FileIdentity
{
    /// All zero for a file that isn't there.
    static FileIdentity Of(const QString& path);

    bool operator==(const FileIdentity& other) const;

    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::uint64_t size = 0;
    std::int64_t seconds = 0;
    std::int64_t nanoseconds = 0;
};

/// The one absolute spelling of a path, links resolved. The last piece need not exist.
QString CanonicalPath(const QString& path);

} // namespace Orrery
