#include "foundations/storage/StoredFile_p.h"

#include "foundations/storage/Hdf5CatalogueIo_p.h"
#include "foundations/storage/Hdf5Form_p.h"
#include "foundations/storage/StorageError_p.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Orrery {

namespace {

QString SystemReason(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

// What is wrong with an open descriptor as a data file; a FIFO would wait for ever, and a folder or device has no
// tree.
void ExpectReadable(int descriptor)
{
    struct stat status = {};
    if (::fstat(descriptor, &status) != 0)
        throw StorageError(SystemReason(errno));
    if (!S_ISREG(status.st_mode))
        throw StorageError(QStringLiteral("is not a regular file"));
    if (status.st_size == 0)
        throw StorageError(QStringLiteral("is empty, not a data file"));
    // A file system without locks is no obstacle.
    if (::flock(descriptor, LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK)
        throw StorageError(QStringLiteral("can't be opened: another program is writing it"));
}

} // namespace

StoredFile::OpenDescriptor::OpenDescriptor(const QString& path)
    : m_descriptor(::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC))
{
    if (m_descriptor < 0) {
        const int reason = errno;
        throw StorageError(SystemReason(reason),
                           reason == ENOENT || reason == ENOTDIR ? ER_NOT_FOUND : ER_FAILED);
    }
    try {
        ExpectReadable(m_descriptor);
    } catch (...) {
        ::close(m_descriptor);
        throw;
    }
}

StoredFile::OpenDescriptor::~OpenDescriptor()
{
    ::close(m_descriptor);
}

std::shared_ptr<const StoredFile> StoredFile::Open(const QString& path)
{
    std::shared_ptr<StoredFile> file(new StoredFile(path));
    file->OpenHdf5();
    file->m_uid = Hdf5CatalogueIo::Read(file->File(), &file->m_catalogue);
    file->m_catalogue.Check();
    if (file->m_catalogue.ArrayBytes() > file->Length())
        throw StorageError(QStringLiteral("the arrays are longer than the file"));
    return file;
}

StoredFile::StoredFile(const QString& path)
    : m_path(path)
    , m_descriptor(path)
{
}

StoredFile::~StoredFile()
{
    const Hdf5Session session;
    m_folders.reset();
    m_file.Close();
    m_driver.reset();
}

void StoredFile::OpenHdf5() const
{
    Hdf5Form::ExpectSound(m_descriptor.Get());
    m_driver.emplace(m_descriptor.Get());
    const Hdf5Handle access = Owned(H5Pcreate(H5P_FILE_ACCESS), &H5Pclose, "HDF5 is out of order");
    H5Pset_fclose_degree(access.Id(), H5F_CLOSE_STRONG);
    if (!m_driver->Use(access.Id()))
        throw StorageError(QStringLiteral("can't be opened: ") + Hdf5Session::LastError());
    m_file =
        Hdf5Handle(H5Fopen(QFile::encodeName(m_path).constData(), H5F_ACC_RDONLY, access.Id()), &H5Fclose);
    if (!m_file.IsValid())
        throw StorageError(QStringLiteral("can't be opened: ") + Hdf5Session::LastError());
}

hid_t StoredFile::Group(std::size_t folder) const
{
    if (!m_file.IsValid()) {
        m_folders.reset();
        OpenHdf5();
    }
    if (!m_folders)
        m_folders.emplace(m_file.Id(), m_catalogue, Hdf5Folders::OpenGroups);
    return m_folders->Of(folder);
}

std::uint64_t StoredFile::Length() const
{
    struct stat status = {};
    return ::fstat(m_descriptor.Get(), &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

void StoredFile::ReadBytes(std::uint64_t offset, std::uint64_t size, void* out) const
{
    for (std::uint64_t done = 0; done < size;) {
        const ssize_t got = ::pread(m_descriptor.Get(), static_cast<char*>(out) + done, size - done,
                                    static_cast<off_t>(offset + done));
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            throw StorageError(QStringLiteral("the array can't be read: ") +
                               (got < 0 ? SystemReason(errno) : QStringLiteral("the file ends before it")));
        done += static_cast<std::uint64_t>(got);
    }
}

StoredFile::Block StoredFile::KeptBlock(std::size_t row, std::uint64_t block) const
{
    const std::lock_guard<std::mutex> lock(m_keptMutex);
    for (KeptEntry& entry : m_kept) {
        if (entry.bytes && entry.row == row && entry.block == block) {
            entry.lastUse = ++m_uses;
            return entry.bytes;
        }
    }
    return nullptr;
}

void StoredFile::KeepBlock(std::size_t row, std::uint64_t block, Block bytes) const
{
    const std::lock_guard<std::mutex> lock(m_keptMutex);
    auto* const oldest =
        std::min_element(m_kept.begin(), m_kept.end(),
                         [](const KeptEntry& a, const KeptEntry& b) { return a.lastUse < b.lastUse; });
    *oldest = {row, block, ++m_uses, std::move(bytes)};
}

void StoredFile::ForgetBlocks(std::size_t row) const
{
    const std::lock_guard<std::mutex> lock(m_keptMutex);
    for (KeptEntry& entry : m_kept) {
        if (entry.row == row)
            entry = KeptEntry();
    }
}

} // namespace Orrery
