#include "foundations/storage/Hdf5DataFile_p.h"

#include "foundations/storage/FileIdentity_p.h"
#include "foundations/storage/Hdf5CatalogueIo_p.h"
#include "foundations/storage/Hdf5FileWriter_p.h"
#include "foundations/storage/LazyArray_p.h"
#include "foundations/storage/OneLine_p.h"
#include "foundations/storage/OpenDataFiles_p.h"
#include "foundations/storage/ReplacementFile_p.h"
#include "foundations/storage/StorageError_p.h"
#include "foundations/storage/StoredFile_p.h"
#include "foundations/storage/TreeReader_p.h"
#include "foundations/storage/TreeWriter_p.h"

#include <QUuid>

#include <new>

namespace Orrery {

namespace {

// Run a load or a save and turn what it throws into a code and one line.
template <class Operation>
ERESULT Guarded(const QString& path, QString* why, Operation operation)
{
    QString reason;
    ERESULT code = ER_FAILED;
    try {
        operation();
        return ER_SUCCESS;
    } catch (const StorageError& error) {
        reason = error.Text();
        code = error.Code();
    } catch (const std::bad_alloc&) {
        reason = QStringLiteral("not enough memory");
    } catch (const std::exception& error) {
        reason = QString::fromUtf8(error.what());
    } catch (...) {
        reason = QStringLiteral("an unknown exception");
    }
    if (why)
        *why = OneLine(path + QStringLiteral(": ") + reason);
    return code;
}

QByteArray NewUid()
{
    return QUuid::createUuid().toByteArray(QUuid::WithoutBraces);
}

// Set while a save is under way.
class SaveMark
{
public:
    explicit SaveMark(bool* mark)
        : m_mark(mark)
    {
        *m_mark = true;
    }
    ~SaveMark() { *m_mark = false; }
    SaveMark(const SaveMark&) = delete;
    SaveMark& operator=(const SaveMark&) = delete;

private:
    bool* m_mark;
};

} // namespace

QString Hdf5DataFile::FileType()
{
    return QStringLiteral("HDF5");
}

DataFile* Hdf5DataFile::Create(const QString& path, OpenMode mode)
{
    return new Hdf5DataFile(path, mode);
}

Hdf5DataFile::Hdf5DataFile(const QString& path, OpenMode mode)
    : DataFile(path, mode)
{
    if (mode != DataFile::Create)
        return;
    // other files may refer to this one before it is saved
    m_uid = NewUid();
    m_uidPath = CanonicalPath(path);
}

// Here the file can still tell its type and uid to those who have referred to it.
Hdf5DataFile::~Hdf5DataFile()
{
    Hdf5DataFile::Close();
}

QString Hdf5DataFile::GetFileType() const
{
    return FileType();
}

bool Hdf5DataFile::HasOption(Option /*option*/) const
{
    return true;
}

QString Hdf5DataFile::GetFileUid() const
{
    return QString::fromLatin1(m_uid);
}

bool Hdf5DataFile::CanTurnReadWrite() const
{
    return true; // a file is open for writing only while it is being saved
}

ERESULT Hdf5DataFile::Load(QString* why)
{
    const std::shared_ptr<DataFile> self =
        weak_from_this().lock(); // what the load calls may let go of the file
    return Guarded(GetPath(), why, [this] { LoadOrThrow(); });
}

ERESULT Hdf5DataFile::Save(QString* why)
{
    return Guarded(GetPath(), why, [this] { SaveOrThrow(); });
}

ERESULT Hdf5DataFile::Close()
{
    OpenDataFiles::Instance().Forget(this);
    DropRoot();
    return ER_SUCCESS;
}

void Hdf5DataFile::LoadOrThrow()
{
    const Hdf5Session session;
    const FileIdentity identity = FileIdentity::Of(GetPath());
    const std::shared_ptr<const StoredFile> file = StoredFile::Open(GetPath());
    const auto array = [&](std::size_t row) { return LazyArray::Make(file, row); };
    const SaveOptions options = Hdf5CatalogueIo::ReadOptions(file->File());
    auto root = std::make_unique<RootProperty>(this);
    TreeReader(file->Structure(), GetPath(), array).Read(root.get());
    ReplaceRoot(std::move(root));
    RestoreOptions(options.compressionLevel, options.packed);
    OpenDataFiles::Instance().Loaded(this, identity);
    m_uid = file->Uid();
    m_uidPath = CanonicalPath(GetPath());
}

void Hdf5DataFile::SaveOrThrow()
{
    if (GetMode() == ReadOnly)
        throw StorageError(QStringLiteral("the file was opened read-only"));
    if (!GetRoot())
        throw StorageError(QStringLiteral("the file is closed"));
    if (m_isSaving)
        throw StorageError(QStringLiteral("a save of this file is under way"));
    const std::shared_ptr<DataFile> self = weak_from_this().lock(); // the listener may let go of the file
    const SaveMark mark(&m_isSaving);
    ReplacementFile replacement(GetPath());
    const QByteArray uid = UidForSave();
    TreeWriter tree(GetPath());
    tree.Write(*GetRoot());
    Hdf5FileWriter writer(&tree, SaveOptions{GetCompressionLevel(), IsPacked()});
    {
        const Hdf5Session session;
        writer.Write(replacement.Descriptor(), uid, GetSaveProgress());
    }
    replacement.Commit();
    m_uid = uid;
    m_uidPath = CanonicalPath(GetPath());
}

// A file that is saved to another place is another file, and references tell the two apart.
QByteArray Hdf5DataFile::UidForSave() const
{
    if (!m_uid.isEmpty() && m_uidPath == CanonicalPath(GetPath()))
        return m_uid;
    return NewUid();
}

} // namespace Orrery
