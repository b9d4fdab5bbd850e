#pragma once

#include <QString>

namespace Orrery {

/// A new file that takes another one's place in one step, so that whoever looks finds the old file or the new
/// one, whole, whatever happens on the way.
///
/// The new file is made beside its target under a name of its own; Commit brings it to the disk and renames it.
/// A target that is a link is followed. What killed processes have left beside the target is cleared away.
class ReplacementFile
{
public:
    /// Errors: throws StorageError for a target that is no regular file or may not be written.
    explicit ReplacementFile(const QString& target);

    /// Removes the new file unless it was committed.
    ~ReplacementFile();
    ReplacementFile(const ReplacementFile&) = delete;
    ReplacementFile& operator=(const ReplacementFile&) = delete;

    /// Where to write: an empty file, open for reading and writing, owned by this object.
    int Descriptor() const { return m_descriptor; }

    /// Put the file, written by now, in place.
    ///
    /// Errors: throws StorageError; the target is then as it was.
    void Commit();

private:
    QString m_target;
    QString m_path;
    int m_descriptor = -1;
    bool m_committed = false;
};

} // namespace Orrery
