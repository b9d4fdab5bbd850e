#include "foundations/storage/DataFile.h"

#include "foundations/property/TreeWalk_p.h"
#include "foundations/storage/DataFileFactory.h"
#include "foundations/storage/FileIdentity_p.h"
#include "foundations/storage/OneLine_p.h"
#include "foundations/storage/OpenDataFiles_p.h"
#include "foundations/storage/ReferencedFiles_p.h"
#include "foundations/storage/StorageMutex_p.h"

#include <mutex>
#include <utility>

namespace Orrery {

namespace {

constexpr int s_highestCompression = 9;

bool IsCompressionLevel(int level)
{
    return level >= 0 && level <= s_highestCompression;
}

} // namespace

DataFile::DataFile(const QString& path, OpenMode mode)
    : m_path(path)
    , m_mode(mode)
    , m_root(new RootProperty(this))
{
}

DataFile::~DataFile()
{
    m_isDying = true;
    OpenDataFiles::Instance().Forget(this);
    DropRoot();
}

ERESULT DataFile::SaveAs(const QString& path, QString* why)
{
    const auto refuse = [&](ERESULT code, const char* reason) {
        if (why)
            *why =
                OneLine((path.isEmpty() ? QString() : path + QStringLiteral(": ")) + QLatin1String(reason));
        return code;
    };
    if (path.isEmpty())
        return refuse(ER_INVALID_ARGUMENT, "no path to save to");

    const std::shared_ptr<DataFile> self =
        weak_from_this().lock(); // who hears of the save may let go of the file
    // Nobody may open the path between the look and the save.
    const std::lock_guard<std::recursive_mutex> lock(StorageMutex());
    if (m_mode == ReadOnly && CanonicalPath(path) == CanonicalPath(m_path))
        return refuse(ER_FAILED, "the file was opened read-only");
    const std::shared_ptr<DataFile> other = OpenDataFiles::Instance().Find(path);
    if (other && other.get() != this)
        return refuse(ER_ALREADY_EXISTS, "another open data file has this path");

    const QString formerPath = std::exchange(m_path, path);
    const OpenMode formerMode = std::exchange(m_mode, ReadWrite);
    const auto goBack = [&] {
        m_path = formerPath;
        m_mode = formerMode;
    };
    ERESULT code = ER_FAILED;
    try {
        code = Save(why);
    } catch (...) {
        goBack();
        throw;
    }
    if (code < 0)
        goBack();
    else
        OpenDataFiles::Instance().Moved(this);
    return code;
}

DataFile::RootProperty* DataFile::GetRoot()
{
    return m_root;
}

const DataFile::RootProperty* DataFile::GetRoot() const
{
    return m_root;
}

QString DataFile::GetPath() const
{
    return m_path;
}

DataFile::OpenMode DataFile::GetMode() const
{
    return m_mode;
}

bool DataFile::OwnsFileContents() const
{
    return m_ownsFileContents;
}

void DataFile::SetOwnsFileContents(bool owns)
{
    m_ownsFileContents = owns;
}

void DataFile::SetSaveProgress(SaveProgress progress)
{
    m_saveProgress = std::move(progress);
}

const DataFile::SaveProgress& DataFile::GetSaveProgress() const
{
    return m_saveProgress;
}

bool DataFile::HasOption(Option /*option*/) const
{
    return false;
}

ERESULT DataFile::SetCompressionLevel(int level)
{
    if (!IsCompressionLevel(level))
        return ER_INVALID_ARGUMENT;
    if (level != 0 && !HasOption(CompressionOption))
        return ER_FAILED;
    m_compressionLevel = level;
    return ER_SUCCESS;
}

int DataFile::GetCompressionLevel() const
{
    return m_compressionLevel;
}

ERESULT DataFile::SetPacked(bool packed)
{
    if (packed && !HasOption(PackingOption))
        return ER_FAILED;
    m_isPacked = packed;
    return ER_SUCCESS;
}

bool DataFile::IsPacked() const
{
    return m_isPacked;
}

void DataFile::RestoreOptions(int compressionLevel, bool packed)
{
    m_compressionLevel = IsCompressionLevel(compressionLevel) ? compressionLevel : 0;
    m_isPacked = packed;
}

void DataFile::ReplaceRoot(std::unique_ptr<RootProperty> root)
{
    // The new one is in its place when the former goes: code of a host's runs then, which may look for it, load the file
    // once more or close it.
    LetGoOf(std::exchange(m_root, root.release()));
}

void DataFile::DropRoot()
{
    LetGoOf(std::exchange(m_root, nullptr));
}

void DataFile::LetGoOf(RootProperty* root) const
{
    if (!root)
        return;
    if (!m_ownsFileContents) {
        Internal::rememberFilePlaces(*root); // it can't tell that any more when it goes
        root->m_file = nullptr;
        return;
    }
    const std::unique_ptr<ReferencedFiles> others =
        std::move(root->m_referencedFiles); // they go after the tree
    delete root;
}

QString DataFile::GetFileUid() const
{
    return QString();
}

bool DataFile::CanTurnReadWrite() const
{
    return false;
}

void DataFile::RetryReferences()
{
    if (m_root && m_root->m_referencedFiles)
        m_root->m_referencedFiles->Retry();
}

// A file that is being destroyed has no class of its own any more that could be asked.
QString DataFile::KnownFileType() const
{
    return m_isDying ? m_openedAs : GetFileType();
}

DataFile::RootProperty::RootProperty(DataFile* file)
    : PropertyObject(QStringLiteral("Root"))
    , m_file(file)
{
}

DataFile::RootProperty::~RootProperty()
{
    m_isDying = true;
    Internal::rememberFilePlaces(*this);
    // A host may destroy the root of a file that it holds; the file must not touch it again.
    if (m_file && m_file->m_root == this)
        m_file->m_root = nullptr;
}

DataFile::RootProperty& DataFile::RootProperty::operator=(const RootProperty& other)
{
    if (this == &other)
        return *this;
    PropertyObject::operator=(other);
    return *this;
}

const QString& DataFile::RootProperty::StaticType()
{
    static const QString type = QStringLiteral("RootProperty");
    return type;
}

const QString& DataFile::RootProperty::PropertyObjType() const
{
    return StaticType();
}

unsigned int DataFile::RootProperty::GetTypeFlags() const
{
    return PropertyObject::GetTypeFlags() | PropertyTypeFlagFileRoot;
}

AbstractProperty* DataFile::RootProperty::DoClone() const
{
    auto clone = std::make_unique<RootProperty>(nullptr);
    *static_cast<PropertyObject*>(clone.get()) = *this;
    return clone.release();
}

DataFile* DataFile::RootProperty::GetParentFile() const
{
    return m_file;
}

} // namespace Orrery
