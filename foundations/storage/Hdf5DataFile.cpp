#include "foundations/storage/Hdf5DataFile_p.h"

#include "foundations/storage/FileIdentity_p.h"
#include "foundations/storage/Hdf5ArrayReader_p.h"
#include "foundations/storage/Hdf5ArrayWriter_p.h"
#include "foundations/storage/Hdf5CatalogueIo_p.h"
#include "foundations/storage/Hdf5Folders_p.h"
#include "foundations/storage/Hdf5WriteDriver_p.h"
#include "foundations/storage/NameCodec_p.h"
#include "foundations/storage/OneLine_p.h"
#include "foundations/storage/OpenDataFiles_p.h"
#include "foundations/storage/ReplacementFile_p.h"
#include "foundations/storage/StorageError_p.h"
#include "foundations/storage/TreeReader_p.h"
#include "foundations/storage/TreeWriter_p.h"

#include <QFile>
#include <QUuid>

#include <cerrno>
#include <cstring>
#include <new>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

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

Hdf5Handle FileAccess()
{
    Hdf5Handle access(H5Pcreate(H5P_FILE_ACCESS), &H5Pclose);
    H5Pset_fclose_degree(access.Id(), H5F_CLOSE_STRONG);
    // The format of 1.8 is read by older tools too, and a file of it is never left marked as open for writing.
    H5Pset_libver_bounds(access.Id(), H5F_LIBVER_V18, H5F_LIBVER_V18);
    H5Pset_file_locking(access.Id(), true, true); // a file system without locks is no obstacle
    return access;
}

// A FIFO would wait for ever, and a folder or device has no tree.
void ExpectReadableRegularFile(const QString& path)
{
    struct stat status = {};
    const int descriptor = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    const bool found = descriptor >= 0 && ::fstat(descriptor, &status) == 0;
    const int reason = errno;
    if (descriptor >= 0)
        ::close(descriptor);
    if (!found)
        throw StorageError(QString::fromLocal8Bit(std::strerror(reason)),
                           reason == ENOENT || reason == ENOTDIR ? ER_NOT_FOUND : ER_FAILED);
    if (!S_ISREG(status.st_mode))
        throw StorageError(QStringLiteral("is not a regular file"));
    if (status.st_size == 0)
        throw StorageError(QStringLiteral("is empty, not a data file"));
}

Hdf5Handle OpenForReading(const QString& path)
{
    ExpectReadableRegularFile(path);
    const QByteArray name = QFile::encodeName(path);
    Hdf5Handle file(H5Fopen(name.constData(), H5F_ACC_RDONLY, FileAccess().Id()), &H5Fclose);
    if (file.IsValid())
        return file;
    const QString reason = Hdf5Session::LastError();
    if (H5Fis_hdf5(name.constData()) == 0)
        throw StorageError(QStringLiteral("is not an HDF5 file"));
    throw StorageError(QStringLiteral("can't be opened: ") + reason);
}

QByteArray NewUid()
{
    return QUuid::createUuid().toByteArray(QUuid::WithoutBraces);
}

// The file descriptor under an open file; HDF5 goes on owning it.
int DescriptorOf(const Hdf5Handle& file)
{
    void* descriptor = nullptr;
    if (H5Fget_vfd_handle(file.Id(), H5P_DEFAULT, &descriptor) < 0 || !descriptor)
        throw StorageError(QStringLiteral("can't be read: ") + Hdf5Session::LastError());
    return *static_cast<int*>(descriptor);
}

void ThrowOnWriteError(const Hdf5WriteDriver& driver)
{
    if (driver.Error() != 0)
        throw StorageError(QStringLiteral("can't be written: ") +
                           QString::fromLocal8Bit(std::strerror(driver.Error())));
}

void WriteArrays(hid_t file, const Hdf5WriteDriver& driver, TreeWriter* tree)
{
    Hdf5Folders folders(file, tree->catalogue, Hdf5Folders::MakeGroups);
    for (const TreeWriter::PendingArray& pending : tree->arrays) {
        try {
            CatalogueFormat::Row& row = tree->catalogue.rows[pending.row];
            const hid_t group = folders.Of(row.parent);
            const QByteArray link = LinkName(tree->catalogue.Name(row), row.parent == 0);
            tree->catalogue.SetArray(&row, Hdf5ArrayWriter::Write(group, link, pending.value));
        } catch (const StorageError& error) {
            throw StorageError(tree->catalogue.Path(pending.row) + QStringLiteral(": ") + error.Text());
        }
        ThrowOnWriteError(driver);
    }
}

void WriteFile(int descriptor, TreeWriter* tree, const QByteArray& uid)
{
    Hdf5WriteDriver driver(descriptor);
    const Hdf5Handle access = FileAccess();
    if (!driver.Use(access.Id()))
        throw StorageError(QStringLiteral("can't be written: ") + Hdf5Session::LastError());
    const Hdf5Handle creation(H5Pcreate(H5P_FILE_CREATE), &H5Pclose);
    H5Pset_obj_track_times(creation.Id(), false); // the same tree gives the same bytes
    Hdf5Handle file(H5Fcreate("replacement", H5F_ACC_TRUNC, creation.Id(), access.Id()), &H5Fclose);
    if (!file.IsValid())
        throw StorageError(QStringLiteral("can't be written: ") + Hdf5Session::LastError());
    WriteArrays(file.Id(), driver, tree);
    Hdf5CatalogueIo::Write(file.Id(), tree->catalogue, uid);
    if (!file.Close())
        throw StorageError(QStringLiteral("can't be written: ") + Hdf5Session::LastError());
    ThrowOnWriteError(driver);
}

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
    if (mode != OpenMode::Create)
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
    const Hdf5Handle file = OpenForReading(GetPath());
    Catalogue catalogue;
    const QByteArray uid = Hdf5CatalogueIo::Read(file.Id(), &catalogue);
    catalogue.Check();
    hsize_t fileSize = 0;
    if (H5Fget_filesize(file.Id(), &fileSize) < 0 || catalogue.ArrayBytes() > fileSize)
        throw StorageError(QStringLiteral("the arrays are longer than the file"));

    const int descriptor = DescriptorOf(file);
    Hdf5Folders folders(file.Id(), catalogue, Hdf5Folders::OpenGroups);
    const auto readArray = [&](std::size_t index) {
        const CatalogueFormat::Row& row = catalogue.rows[index];
        const hid_t group = folders.Of(row.parent);
        const QByteArray link = LinkName(catalogue.Name(row), row.parent == 0);
        return Hdf5ArrayReader::Read(descriptor, group, link, row.element, row.ordering != 0,
                                     catalogue.Array(row));
    };

    auto root = std::make_unique<RootProperty>(this);
    TreeReader(catalogue, GetPath(), readArray).Read(root.get());
    ReplaceRoot(std::move(root));
    OpenDataFiles::Instance().Loaded(this, identity);
    m_uid = uid;
    m_uidPath = CanonicalPath(GetPath());
}

void Hdf5DataFile::SaveOrThrow()
{
    if (GetMode() == ReadOnly)
        throw StorageError(QStringLiteral("the file was opened read-only"));
    if (!GetRoot())
        throw StorageError(QStringLiteral("the file is closed"));
    TreeWriter tree(GetPath());
    tree.Write(*GetRoot());

    const QByteArray uid = UidForSave();
    const Hdf5Session session;
    ReplacementFile replacement(GetPath());
    WriteFile(replacement.Descriptor(), &tree, uid);
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
