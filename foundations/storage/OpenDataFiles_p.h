#pragma once

#include "foundations/storage/DataFile.h"
#include "foundations/storage/FileIdentity_p.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <atomic>
#include <cstdint>
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

    /// `identity` is that of the file on disk from before it was read. A file that was opened for a reference is held by
    /// the tree of that reference.
    void Add(const std::shared_ptr<DataFile>& file, const FileIdentity& identity, bool forReference);

    /// The tree that holds `file` for its references lets go of it.
    void Released(const DataFile* file);

    /// Whether nobody but the caller, by this one pointer, and the tree whose reference it was opened for holds the file.
    bool IsHeldByReferencesOnly(const std::shared_ptr<DataFile>& file);

    /// Whether a file may be loaded now: it isn't being loaded already, further up on the stack, and not too many are.
    /// For the one who holds StorageMutex().
    bool CanLoad(const QString& canonicalPath) const;

    /// Tells, as long as it lives, that a file is being loaded. For the one who holds StorageMutex().
    class Loading
    {
    public:
        explicit Loading(const QString& canonicalPath);
        ~Loading();
        Loading(const Loading&) = delete;
        Loading& operator=(const Loading&) = delete;
    };

    /// A number that grows whenever a file has been opened, made, loaded or moved.
    std::uint64_t Change() const { return m_change.load(std::memory_order_acquire); }

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
        bool forReference = false;
    };

    OpenDataFiles() = default;

    Entry* EntryOf(const DataFile* file);
    void Insert(const QString& key, const Entry& entry);
    void Remove(const DataFile* file);
    void TellChange() { m_change.fetch_add(1, std::memory_order_release); }

    mutable std::mutex m_mutex;
    QHash<QString, Entry> m_byPath;
    QHash<const DataFile*, QString> m_keys; // of each of them in m_byPath
    QStringList m_loading;                  // under StorageMutex()
    std::atomic<std::uint64_t> m_change{0};
};

} // namespace Orrery
