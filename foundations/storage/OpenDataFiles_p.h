#pragma once

#include "foundations/storage/DataFile.h"
#include "foundations/storage/FileIdentity_p.h"

#include <QHash>
#include <QString>

#include <memory>
#include <mutex>

namespace Orrery {

/// The data files that are open in this process, by canonical path.
///
/// Threads: all operations may be called from any thread.
class OpenDataFiles
{
public:
    static OpenDataFiles& Instance();

    /// The open file of that path, whatever the spelling of the path; null when there is none.
    std::shared_ptr<DataFile> Find(const QString& path) const;

    /// Whether the file on disk is still the one that was there when `file` was added.
    bool IsUnchangedOnDisk(const DataFile* file) const;

    /// `identity` is that of the file on disk from before it was read.
    void Add(const std::shared_ptr<DataFile>& file, const FileIdentity& identity);

    /// `file` now holds what that state of the file on disk holds; nothing happens if it isn't known.
    void Loaded(const DataFile* file, const FileIdentity& identity);

    /// `file` has a new path, under which it is known from here on; one that nobody shares isn't.
    void Moved(DataFile* file);

    void Forget(const DataFile* file);

private:
    struct Entry
    {
        const DataFile* file = nullptr;
        std::weak_ptr<DataFile> owner;
        FileIdentity identity;
    };

    OpenDataFiles() = default;

    mutable std::mutex m_mutex;
    QHash<QString, Entry> m_byPath;
};

} // namespace Orrery
