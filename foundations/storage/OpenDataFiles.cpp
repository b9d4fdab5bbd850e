#include "foundations/storage/OpenDataFiles_p.h"

namespace Orrery {

namespace {

// Files that open one another while they load nest on the stack.
constexpr int s_deepestLoad = 32;

} // namespace

OpenDataFiles& OpenDataFiles::Instance()
{
    // Never destroyed: a data file may be closed by a static's destructor.
    static OpenDataFiles* const instance = new OpenDataFiles;
    return *instance;
}

std::shared_ptr<DataFile> OpenDataFiles::Find(const QString& path) const
{
    const QString key = CanonicalPath(path);
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_byPath.value(key).owner.lock();
}

bool OpenDataFiles::IsUnchangedOnDisk(const DataFile* file) const
{
    const FileIdentity now = FileIdentity::Of(file->GetPath());
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_byPath.constFind(m_keys.value(file));
    return m_keys.contains(file) && found->identity == now;
}

void OpenDataFiles::Add(const std::shared_ptr<DataFile>& file, const FileIdentity& identity,
                        bool forReference)
{
    const QString key = CanonicalPath(file->GetPath());
    const std::lock_guard<std::mutex> lock(m_mutex);
    Insert(key, Entry{file.get(), file, identity, forReference});
    TellChange();
}

OpenDataFiles::Entry* OpenDataFiles::EntryOf(const DataFile* file)
{
    const auto key = m_keys.constFind(file);
    return key == m_keys.constEnd() ? nullptr : &m_byPath[*key];
}

// A file that was known by that path before is known no more.
void OpenDataFiles::Insert(const QString& key, const Entry& entry)
{
    const auto former = m_byPath.constFind(key);
    if (former != m_byPath.constEnd())
        m_keys.remove(former->file);
    m_byPath.insert(key, entry);
    m_keys.insert(entry.file, key);
}

void OpenDataFiles::Remove(const DataFile* file)
{
    const auto key = m_keys.constFind(file);
    if (key == m_keys.constEnd())
        return;
    m_byPath.remove(*key);
    m_keys.erase(key);
}

void OpenDataFiles::Released(const DataFile* file)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (Entry* const entry = EntryOf(file))
        entry->forReference = false;
}

bool OpenDataFiles::IsHeldByReferencesOnly(const std::shared_ptr<DataFile>& file)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const Entry* const entry = EntryOf(file.get());
    return entry && entry->forReference && file.use_count() == 2;
}

bool OpenDataFiles::CanLoad(const QString& canonicalPath) const
{
    return m_loading.size() < s_deepestLoad && !m_loading.contains(canonicalPath);
}

OpenDataFiles::Loading::Loading(const QString& canonicalPath)
{
    Instance().m_loading.append(canonicalPath);
}

OpenDataFiles::Loading::~Loading()
{
    Instance().m_loading.removeLast();
}

void OpenDataFiles::Loaded(const DataFile* file, const FileIdentity& identity)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (Entry* const entry = EntryOf(file))
        entry->identity = identity;
    TellChange();
}

void OpenDataFiles::Moved(DataFile* file)
{
    const QString key = CanonicalPath(file->GetPath());
    const FileIdentity identity = FileIdentity::Of(file->GetPath());
    const std::lock_guard<std::mutex> lock(m_mutex);
    const Entry* const former = EntryOf(file);
    const bool forReference = former && former->forReference;
    Remove(file);
    const std::shared_ptr<DataFile> owner = file->weak_from_this().lock();
    if (owner)
        Insert(key, Entry{file, owner, identity, forReference});
    TellChange();
}

void OpenDataFiles::Forget(const DataFile* file)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    Remove(file);
}

} // namespace Orrery
