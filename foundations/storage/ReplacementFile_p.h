#pragma once

#include <QByteArray>
#include <QString>

namespace Orrery {

/// A new file that takes another one's place in one step, so that whoever looks finds the old file or the new
/// one, whole, whatever happens on the way.
///
/// The new file is made beside its target, under the one name that all saves of that target use; Commit brings it to the
/// disk and renames it. So two saves of one target meet at that name, and the second is refused; what a killed process
/// has left there is cleared away by the next save. Two names of one file (hard links) meet at a lock on the file
/// itself. Locks are those of open file descriptions, which tell threads apart and go with the process, and lie far
/// behind the end of the file, out of the way of the locks of readers.
/// A target that is a link is followed.
class ReplacementFile
{
public:
    /// Errors: throws StorageError for a target that is no regular file, may not be written, or is being saved by
    ///         somebody else.
    explicit ReplacementFile(const QString& target);

    /// Removes the new file unless it was committed.
    ~ReplacementFile();
    ReplacementFile(const ReplacementFile&) = delete;
    ReplacementFile& operator=(const ReplacementFile&) = delete;

    /// Where to write: an empty file, open for reading and writing, owned by this object.
    int Descriptor() const { return m_descriptor.Get(); }

    /// Put the file, written by now, in place.
    ///
    /// Errors: throws StorageError; the target is then as it was, unless the text says that it is saved.
    void Commit();

    /// Owns one open file.
    class OpenFile
    {
    public:
        OpenFile() = default;
        explicit OpenFile(int descriptor)
            : m_descriptor(descriptor)
        {
        }
        OpenFile(OpenFile&& other) noexcept;
        OpenFile& operator=(OpenFile&& other) noexcept;
        ~OpenFile();

        int Get() const { return m_descriptor; }
        bool IsOpen() const { return m_descriptor >= 0; }

    private:
        int m_descriptor = -1;
    };

private:
    void LockTarget();
    bool Make();
    void ClearAbandoned();
    bool StandsAtItsName(const OpenFile& file) const;

    OpenFile m_folder; ///< everything happens relative to it, should it be moved meanwhile
    OpenFile m_target; ///< the present file, only for its lock and its mode; closed for a new one
    OpenFile m_descriptor;
    QByteArray m_targetName;
    QByteArray m_name; ///< of the new file
    bool m_isNamed = false;
};

} // namespace Orrery
