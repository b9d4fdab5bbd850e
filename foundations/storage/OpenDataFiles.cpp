#include "foundations/storage/OpenDataFiles_p.h"

#include <algorithm>

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
    const auto found = std::find_if(m_byPath.cbegin(), m_byPath.cend(),
                                    [file](const Entry& entry) { return entry.file == file; });
    return found != m_byPath.cend() && found->identity == now;
}

void OpenDataFiles::Add(const std::shared_ptr<DataFile>& file, const FileIdentity& identity,
                        bool forReference)
{
    const QString key = CanonicalPath(file->GetPath());
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_byPath.insert(key, Entry{file.get(), file, identity, forReference});
    TellChange();
}

void OpenDataFiles::Released(const DataFile* file)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (Entry& entry : m_byPath) {
        if (entry.file == file)
            entry.forReference = false;
    }
}

bool OpenDataFiles::IsHeldByReferencesOnly(const std::shared_ptr<DataFile>& file) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return std::any_of(m_byPath.cbegin(), m_byPath.cend(), [&](const Entry& entry) {
        return entry.file == file.get() && entry.forReference && file.use_count() == 2;
    });
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
    const auto found = std::find_if(m_byPath.begin(), m_byPath.end(),
                                    [file](const Entry& entry) { return entry.file == file; });
    if (found != m_byPath.end())
        found->identity = identity;
    TellChange();
}

void OpenDataFiles::Moved(DataFile* file)
{
    const QString key = CanonicalPath(file->GetPath());
    const FileIdentity identity = FileIdentity::Of(file->GetPath());
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = std::find_if(m_byPath.begin(), m_byPath.end(),
                                    [file](const Entry& entry) { return entry.file == file; });
    bool forReference = false;
    if (found != m_byPath.end()) {
        forReference = found->forReference;
        m_byPath.erase(found);
    }
    const std::shared_ptr<DataFile> owner = file->weak_from_this().lock();
    if (owner)
        m_byPath.insert(key, Entry{file, owner, identity, forReference});
    TellChange();
}

void OpenDataFiles::Forget(const DataFile* file)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (auto entry = m_byPath.begin(); entry != m_byPath.end();) {
        if (entry->file == file)
            entry = m_byPath.erase(entry);
        else
            ++entry;
    }
}

} // namespace Orrery
