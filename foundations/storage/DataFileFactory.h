#pragma once

#include "foundations/property/ErrorResult.h"
#include "foundations/storage/DataFile.h"
#include "orrerycore_export.h"

#include <QString>
#include <QStringList>

#include <memory>

namespace Orrery {

/// Opens data files, knows the open ones by their canonical path, and takes file types of a host's own.
///
/// Every object of this class stands for the one process-wide registry; an assignment therefore changes
/// nothing.
///
/// Threads: all operations may be called from any thread. A data file itself is for one thread at a time.
class ORRERYCORE_EXPORT DataFileFactory
{
public:
    /// Makes an unloaded data file of one type; the caller owns it. Null stands for "can't".
    using Creator = DataFile* (*)(const QString& path, DataFile::OpenMode mode);

    static DataFileFactory& Instance(); ///< valid to the end of the process

    DataFileFactory& operator=(const DataFileFactory&) noexcept { return *this; } ///< changes nothing
    DataFileFactory& operator=(DataFileFactory&&) noexcept { return *this; }      ///< changes nothing

    /// Make a file type known. "HDF5" is built in.
    ///
    /// Errors: ER_INVALID_ARGUMENT for an empty name or a null creator, ER_ALREADY_EXISTS for a known name.
    ERESULT RegisterFileType(const QString& fileType, Creator creator);

    /// The known file types, sorted.
    QStringList GetFileTypes() const;

    /// Open a data file. `*out` shares its ownership with every other user of the same open file.
    ///
    /// A file that is open already is answered with the same object: one file is one tree in a process. A
    /// file that was open read-only and has been replaced on disk since is read anew.
    ///
    /// Errors: `*out` is untouched and `*why`, if given, receives one line for a person.
    ///         ER_INVALID_ARGUMENT for a null out, an empty path or an unknown file type; ER_NOT_FOUND for a
    ///         file that isn't there; ER_ALREADY_EXISTS for a mode that the open file can't serve (Create of
    ///         an open file, ReadWrite of one that is open read-only); ER_FAILED for a file that can't be
    ///         read or isn't sound, and the reason goes to the Qt log too; ER_FAILED for the very file that is
    ///         being loaded by the caller's caller, and where 32 files load one another.
    /// Edge:   a file that is open read-only only because references lead into it becomes ReadWrite, if its type can
    ///         do that ("HDF5" can); nobody has counted on its staying read-only.
    ERESULT Open(const QString& path, DataFile::OpenMode mode, std::shared_ptr<DataFile>* out,
                 QString* why = nullptr, const QString& fileType = QStringLiteral("HDF5"));

    /// The open data file of that path, or null. Nothing is opened.
    std::shared_ptr<DataFile> FindOpen(const QString& path) const;

private:
    friend class ReferencedFiles;

    enum class Client
    {
        Host,
        Reference
    };

    /// As Open, read-only, for the tree that holds the file if it is new; nothing goes to the log.
    static ERESULT OpenForReference(const QString& path, const QString& fileType,
                                    std::shared_ptr<DataFile>* out, bool* isNew, QString* why);
    static ERESULT OpenNew(const QString& path, DataFile::OpenMode mode, const QString& fileType,
                           Client client, std::shared_ptr<DataFile>* out, QString* why);
    static ERESULT UseOpen(std::shared_ptr<DataFile> open, DataFile::OpenMode mode,
                           std::shared_ptr<DataFile>* out, QString* why);

    DataFileFactory() = default;
    DataFileFactory(const DataFileFactory&) = default;
};

} // namespace Orrery
