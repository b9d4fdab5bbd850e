#pragma once

#include "foundations/property/PropertyReference.h"
#include "foundations/storage/DataFile.h"
#include "foundations/storage/FileIdentity_p.h"

#include <QHash>
#include <QPair>
#include <QString>

#include <cstdint>
#include <memory>
#include <vector>

namespace Orrery {

/// The other data files that the references of one tree lead to: those that were opened for them, and what is known of
/// those that can't be used. It belongs to the root of the tree. DataFile.h has the rules.
///
/// Threads: belongs to the thread that uses the tree. A file that isn't known yet is looked for under StorageMutex().
class ReferencedFiles
{
public:
    /// The target of a reference into another file; what PropertyReference does until a host has its own way.
    ///
    /// Edge: opening a file runs code of the host's classes in it. Where that destroys the tree of the reference,
    ///       there is no target.
    static AbstractProperty* Resolve(const PropertyReference& reference);

    ReferencedFiles();
    ReferencedFiles(const ReferencedFiles&) = delete;
    ReferencedFiles& operator=(const ReferencedFiles&) = delete;

    /// Lets go of the files. Those that go with them in their turn go one after the other, however long the chain is.
    ~ReferencedFiles();

    /// Forget which files couldn't be used.
    void Retry();

private:
    class Search;

    /// What is known of one path.
    struct Place
    {
        enum State
        {
            OwnTree,   ///< the file that the reference stands in
            OtherFile, ///< an open one
            Another,   ///< one that was opened, and isn't the one that was meant
            Unusable
        };

        State state = Unusable;
        QString openPath;             ///< of the open file, or of the file that the reference stands in
        std::weak_ptr<DataFile> file; ///< of OtherFile
        QString uid;                  ///< of Another; empty is never passed over
        QString reason;               ///< of Unusable
        FileIdentity identity;        ///< on disk, before it was looked at
        std::uint64_t change = 0;     ///< OpenDataFiles::Change() after that
        bool warned = false;          ///< that it can't be used, or that something isn't in it
    };

    using PlaceKey = QPair<QString, QString>; // path, file type

    QHash<PlaceKey, Place> m_places;
    std::vector<std::shared_ptr<DataFile>> m_opened;
};

} // namespace Orrery
