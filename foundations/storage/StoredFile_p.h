#pragma once

#include "foundations/storage/Catalogue_p.h"
#include "foundations/storage/Hdf5Folders_p.h"
#include "foundations/storage/Hdf5Handle_p.h"
#include "foundations/storage/Hdf5ReadDriver_p.h"

#include <QByteArray>
#include <QString>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>

namespace Orrery {

/// A data file that is open for reading: its descriptor, its HDF5 file and its checked catalogue.
///
/// It stays open for as long as anybody shares it: the load that opened it, and then every array of it that hasn't
/// been read. What happens to the path meanwhile (another file renamed over it, a removal) doesn't matter. A
/// program that wants to change the file in place is kept out by a shared lock, like that of every HDF5 reader.
/// Threads: any, but for what says that it is used within an Hdf5Session.
class StoredFile
{
public:
    /// Open the file at `path`, read its structure and test it. Within an Hdf5Session.
    ///
    /// Errors: throws StorageError; ER_NOT_FOUND in it when there is no such file.
    static std::shared_ptr<const StoredFile> Open(const QString& path);

    ~StoredFile();
    StoredFile(const StoredFile&) = delete;
    StoredFile& operator=(const StoredFile&) = delete;

    const QString& Path() const { return m_path; }  ///< as it was opened
    const QByteArray& Uid() const { return m_uid; } ///< the identity that stands in the file
    const Catalogue& Structure() const { return m_catalogue; }
    int Descriptor() const { return m_descriptor.Get(); } ///< the open file, for positioned reads

    hid_t File() const { return m_file.Id(); } ///< Within an Hdf5Session.

    /// The group of a folder's row, valid until the next call. Within an Hdf5Session. Errors: throws StorageError.
    hid_t Group(std::size_t folder) const;

    /// Length of the file now; it may have been cut since it was opened.
    std::uint64_t Length() const;

    /// Read `size` bytes at `offset` straight from the file.
    ///
    /// Errors: throws StorageError for a failing read and for one past the end.
    void ReadBytes(std::uint64_t offset, std::uint64_t size, void* out) const;

    /// A tested block of an array's stored bytes.
    using Block = std::shared_ptr<const char>;

    /// The last blocks that were read in parts are kept, 64 MiB of them at the most, so that a loop over single
    /// elements doesn't read and test 4 MiB for each. None when this one isn't kept.
    Block KeptBlock(std::size_t row, std::uint64_t block) const;
    void KeepBlock(std::size_t row, std::uint64_t block, Block bytes) const;
    void ForgetBlocks(std::size_t row) const; ///< the array has been read as a whole

private:
    class OpenDescriptor
    {
    public:
        explicit OpenDescriptor(const QString& path);
        ~OpenDescriptor();
        OpenDescriptor(const OpenDescriptor&) = delete;
        OpenDescriptor& operator=(const OpenDescriptor&) = delete;
        int Get() const { return m_descriptor; }

    private:
        int m_descriptor;
    };

    struct KeptEntry
    {
        std::size_t row = 0;
        std::uint64_t block = 0;
        std::uint64_t lastUse = 0;
        Block bytes;
    };

    explicit StoredFile(const QString& path);
    void OpenHdf5() const;

    QString m_path;
    OpenDescriptor m_descriptor;
    mutable std::optional<Hdf5ReadDriver> m_driver;
    mutable Hdf5Handle m_file; ///< opened anew when the library has been closed meanwhile
    Catalogue m_catalogue;
    QByteArray m_uid;
    mutable std::optional<Hdf5Folders> m_folders; ///< arrays are often read one after the other

    mutable std::mutex m_keptMutex;
    mutable std::array<KeptEntry, 16> m_kept;
    mutable std::uint64_t m_uses = 0;
};

} // namespace Orrery
