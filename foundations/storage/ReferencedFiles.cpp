#include "foundations/storage/ReferencedFiles_p.h"

#include "foundations/property/PropertyHandle.h"
#include "foundations/property/PropertyPath.h"
#include "foundations/storage/DataFileFactory.h"
#include "foundations/storage/OneLine_p.h"
#include "foundations/storage/OpenDataFiles_p.h"
#include "foundations/storage/StorageMutex_p.h"

#include <QDebug>
#include <QFile>
#include <QStringList>

#include <mutex>
#include <utility>

#include <sys/stat.h>

namespace Orrery {

namespace {

using Files = std::vector<std::shared_ptr<DataFile>>;

// Files that this thread is letting go of; null when it isn't. A plain pointer, since a data file may be closed by a
// static's destructor, when objects of the thread are gone.
thread_local Files* s_leaving = nullptr;

// A file that goes lets go of others, and a chain of them may be longer than the stack.
void LetGo(Files files)
{
    if (s_leaving) {
        for (std::shared_ptr<DataFile>& file : files)
            s_leaving->push_back(std::move(file));
        return;
    }
    s_leaving = &files;
    while (!files.empty()) {
        const std::shared_ptr<DataFile> last = std::move(files.back());
        files.pop_back();
    }
    s_leaving = nullptr;
}

QString TypeOf(const PropertyReference::TargetFile& wanted)
{
    return wanted.type.isEmpty() ? QStringLiteral("HDF5") : wanted.type;
}

QStringList PathsOf(const PropertyReference::TargetFile& wanted)
{
    QStringList paths{wanted.path};
    if (!wanted.otherPath.isEmpty() && wanted.otherPath != wanted.path)
        paths += wanted.otherPath;
    return paths;
}

bool IsUid(const QString& uid, const QString& wanted)
{
    return uid.isEmpty() || wanted.isEmpty() || uid == wanted;
}

// Even to open a device can have an effect. Paths of a host's own file types may be no files at all.
bool IsOddFile(const QString& path, const QString& type)
{
    struct stat status = {};
    return type == QStringLiteral("HDF5") && ::stat(QFile::encodeName(path).constData(), &status) == 0 &&
           !S_ISREG(status.st_mode);
}

} // namespace

/// One look-up, for a reference in the tree of a root. It keeps nothing of the reference but texts: the host's code that
/// runs when a file is opened may destroy everything.
class ReferencedFiles::Search
{
public:
    Search(const PropertyReference& reference, const DataFile::RootProperty& root)
        : m_root(&root)
        , m_rootHandle(&root)
        , m_wanted(reference.ReferenceFile())
        , m_type(TypeOf(m_wanted))
        , m_reference(reference.GetFullPath())
        , m_path(reference.ReferencePath())
    {
        if (const DataFile* const file = root.GetParentFile()) {
            m_ownPath = file->GetPath();
            m_ownUid = file->GetFileUid();
        }
    }

    AbstractProperty* Run()
    {
        for (const QString& path : PathsOf(m_wanted)) {
            const PropertyObject* const tree = TreeOf(path);
            if (!IsAlive())
                return nullptr;
            if (tree)
                return FindIn(*tree, path);
            if (m_isTooEarly)
                return nullptr;
        }
        if (Place& first = PlaceOf(m_wanted.path); !std::exchange(first.warned, true))
            Warn(QStringLiteral("can't be resolved to ") + m_path + QStringLiteral(": ") +
                 m_reasons.join(QStringLiteral("; ")));
        return nullptr;
    }

private:
    bool IsAlive() const { return m_rootHandle.Get() != nullptr; }
    ReferencedFiles& Files() const { return *m_root->m_referencedFiles; }
    Place& PlaceOf(const QString& path) const { return Files().m_places[PlaceKey(path, m_type)]; }

    const PropertyObject* PassOver(const QString& path, const QString& reason)
    {
        m_reasons += path + QStringLiteral(": ") + reason;
        return nullptr;
    }
    const PropertyObject* PassOverAnother(const QString& path)
    {
        return PassOver(path, QStringLiteral("is another file than the one that was referred to"));
    }

    // The tree of the file at that path; null, with the reason noted, where it can't be used.
    const PropertyObject* TreeOf(const QString& path)
    {
        const auto known = Files().m_places.find(PlaceKey(path, m_type));
        if (known != Files().m_places.end()) {
            Place& place = *known;
            if (place.state == Place::OwnTree && place.openPath == m_ownPath)
                return OwnTree(path);
            if (place.state == Place::OtherFile) {
                const std::shared_ptr<DataFile> file = place.file.lock();
                if (file && file->GetRoot() && file->GetPath() == place.openPath)
                    return TreeIn(*file, path);
            }
            if (place.state == Place::Unusable && IsUnchanged(path, &place))
                return PassOver(path, place.reason);
            if (place.state == Place::Another && !IsUid(place.uid, m_wanted.uid) && IsUnchanged(path, &place))
                return PassOverAnother(path);
        }
        return LookAt(path);
    }

    const PropertyObject* OwnTree(const QString& path)
    {
        return IsUid(m_ownUid, m_wanted.uid) ? m_root : PassOverAnother(path);
    }
    const PropertyObject* TreeIn(DataFile& file, const QString& path)
    {
        return IsUid(file.GetFileUid(), m_wanted.uid) ? file.GetRoot() : PassOverAnother(path);
    }

    // Whether nothing has happened that may have made a file usable. The disk is asked only after this process has
    // opened, made, loaded or moved some data file.
    static bool IsUnchanged(const QString& path, Place* place)
    {
        const std::uint64_t change = OpenDataFiles::Instance().Change();
        if (place->change != change) {
            if (!(FileIdentity::Of(path) == place->identity) || OpenDataFiles::Instance().Find(path))
                return false;
            place->change = change;
        }
        return true;
    }

    Place& Note(const QString& path, Place place) const
    {
        place.change = OpenDataFiles::Instance().Change();
        Place& kept = PlaceOf(path);
        kept = std::move(place);
        return kept;
    }

    const PropertyObject* LookAt(const QString& path)
    {
        Place place;
        // beyond a NUL the system wouldn't see the name, and open what the rest of it names
        if (path.contains(QChar(0)))
            return Fail(path, std::move(place), QStringLiteral("is not a file name"));
        const std::lock_guard<std::recursive_mutex> lock(StorageMutex());
        const QString canonical = CanonicalPath(path);
        if (!m_ownPath.isEmpty() && canonical == CanonicalPath(m_ownPath)) {
            place.state = Place::OwnTree;
            place.openPath = m_ownPath;
            Note(path, std::move(place));
            return OwnTree(path);
        }
        if (!OpenDataFiles::Instance().CanLoad(canonical)) {
            m_isTooEarly = true; // it can be used as soon as it stands
            return nullptr;
        }
        place.identity = FileIdentity::Of(path);
        if (IsOddFile(path, m_type))
            return Fail(path, std::move(place), QStringLiteral("is not a regular file"));
        return Open(path, std::move(place));
    }

    const PropertyObject* Open(const QString& path, Place place)
    {
        std::shared_ptr<DataFile> file;
        bool isNew = false;
        QString why;
        const ERESULT code = DataFileFactory::OpenForReference(path, m_type, &file, &isNew, &why);
        if (!IsAlive())
            return nullptr;
        if (code < 0)
            return Fail(path, std::move(place), why);
        const QString uid = file->GetFileUid();
        if (isNew && !IsUid(uid, m_wanted.uid)) {
            place.state = Place::Another;
            place.uid = uid;
            file.reset();
            if (!IsAlive())
                return nullptr;
            Note(path, std::move(place));
            return PassOverAnother(path);
        }
        place.state = Place::OtherFile;
        place.openPath = file->GetPath();
        place.file = file;
        if (isNew)
            Files().m_opened.push_back(file);
        Note(path, std::move(place));
        return TreeIn(*file, path);
    }

    const PropertyObject* Fail(const QString& path, Place place, const QString& reason)
    {
        const QString prefix = path + QStringLiteral(": ");
        place.state = Place::Unusable;
        place.reason = reason.startsWith(prefix) ? reason.mid(prefix.size()) : reason;
        return PassOver(path, Note(path, std::move(place)).reason);
    }

    AbstractProperty* FindIn(const PropertyObject& tree, const QString& path)
    {
        AbstractProperty* const found = Property::FindProperty(&tree, m_path);
        if (!found && !std::exchange(PlaceOf(path).warned, true))
            Warn(QStringLiteral("can't be resolved: there is no ") + m_path + QStringLiteral(" in ") + path);
        return found;
    }

    void Warn(const QString& what) const
    {
        const QString file = m_ownPath.isEmpty() ? QString() : m_ownPath + QStringLiteral(": ");
        qWarning().noquote().nospace()
            << OneLine(file + QStringLiteral("reference ") + m_reference + QLatin1Char(' ') + what);
    }

    const DataFile::RootProperty* m_root; // not to be touched once it isn't alive
    PropertyHandle m_rootHandle;
    PropertyReference::TargetFile m_wanted;
    QString m_type;
    QString m_reference;
    QString m_path;
    QString m_ownPath;
    QString m_ownUid;
    QStringList m_reasons;
    bool m_isTooEarly = false;
};

namespace {

// A reference whose tree is no file's, or just goes, has nobody who could own a file that it opens.
AbstractProperty* FindInOpenFiles(const PropertyReference& reference)
{
    const PropertyReference::TargetFile wanted = reference.ReferenceFile();
    for (const QString& path : PathsOf(wanted)) {
        if (path.contains(QChar(0)))
            continue;
        const std::shared_ptr<DataFile> file = OpenDataFiles::Instance().Find(path);
        if (file && file->GetRoot() && IsUid(file->GetFileUid(), wanted.uid))
            return Property::FindProperty(file->GetRoot(), reference.ReferencePath());
    }
    return nullptr;
}

} // namespace

AbstractProperty* ReferencedFiles::Resolve(const PropertyReference& reference)
{
    const auto* const root = dynamic_cast<const DataFile::RootProperty*>(reference.GetRootProperty());
    if (!root || root->m_isDying)
        return FindInOpenFiles(reference);
    if (!root->m_referencedFiles)
        root->m_referencedFiles = std::make_unique<ReferencedFiles>();
    return Search(reference, *root).Run();
}

ReferencedFiles::ReferencedFiles() = default;

ReferencedFiles::~ReferencedFiles()
{
    for (const std::shared_ptr<DataFile>& file : m_opened)
        OpenDataFiles::Instance().Released(file.get());
    LetGo(std::move(m_opened));
}

void ReferencedFiles::Retry()
{
    for (auto place = m_places.begin(); place != m_places.end();) {
        if (place->state == Place::OwnTree || place->state == Place::OtherFile) {
            place->warned = false;
            ++place;
        } else {
            place = m_places.erase(place);
        }
    }
}

} // namespace Orrery
