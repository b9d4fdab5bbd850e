#include "foundations/storage/ReplacementFile_p.h"

#include "foundations/storage/FileIdentity_p.h"
#include "foundations/storage/StorageError_p.h"

#include <QFile>
#include <QFileInfo>

#include <xxhash.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace Orrery {

namespace {

const char s_suffix[] = ".saving";

// Some file systems take names of 143 bytes only, others of 255.
constexpr int s_longestName = 143;

// Where no locks can be had, an unfinished file that nobody has written to for so long is taken for abandoned.
constexpr std::time_t s_longSeconds = 3600;

// The most that the system hands out.
constexpr int s_longestAccessList = 65536;

// Somebody else's saves may come and go between two looks, but not for ever.
constexpr int s_mostAttempts = 16;

const QString s_isBeingSaved = QStringLiteral("another save of this file is under way");

[[noreturn]] void FailWithReason(const QString& what)
{
    const int reason = errno;
    throw StorageError(what + QStringLiteral(": ") + QString::fromLocal8Bit(std::strerror(reason)));
}

[[noreturn]] void FailWithReason(const char* what)
{
    FailWithReason(QString::fromLatin1(what));
}

enum class LockResult
{
    Taken,
    TakenBySomebodyElse,
    NoLocksHere
};

// One byte that no file reaches.
struct flock LockOf(short type)
{
    struct flock lock = {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = off_t(1) << 62U;
    lock.l_len = 1;
    return lock;
}

LockResult Lock(const ReplacementFile::OpenFile& file)
{
    struct flock lock = LockOf(F_WRLCK);
    if (::fcntl(file.Get(), F_OFD_SETLK, &lock) == 0)
        return LockResult::Taken;
    return errno == EAGAIN || errno == EACCES ? LockResult::TakenBySomebodyElse : LockResult::NoLocksHere;
}

// Closing wouldn't do: a process that was forked during the save has the file open too, for as long as it lives.
void Unlock(const ReplacementFile::OpenFile& file)
{
    struct flock lock = LockOf(F_UNLCK);
    if (file.IsOpen())
        ::fcntl(file.Get(), F_OFD_SETLK, &lock);
}

// The same for the same target, whoever saves it. A long name keeps its beginning, cut before a character, and gets its
// number.
QByteArray TemporaryName(const QByteArray& target)
{
    QByteArray name = '.' + target + s_suffix;
    if (name.size() <= s_longestName)
        return name;
    const QByteArray number =
        QByteArray::number(
            static_cast<qulonglong>(XXH3_64bits(target.constData(), static_cast<std::size_t>(target.size()))),
            16)
            .rightJustified(16, '0');
    int length = s_longestName - static_cast<int>(sizeof s_suffix) - number.size() - 1;
    while (length > 0 && (static_cast<unsigned char>(target[length]) & 0xC0U) == 0x80U)
        --length;
    return '.' + target.left(length) + '~' + number + s_suffix;
}

// Some file systems can't do this for folders, and say EINVAL; there the rename is as durable as it gets.
void SyncFolder(const ReplacementFile::OpenFile& folder)
{
    const ReplacementFile::OpenFile opened(::openat(folder.Get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!opened.IsOpen() || (::fsync(opened.Get()) != 0 && errno != EINVAL))
        FailWithReason("is saved, but may not survive a power failure");
}

// Give a file the access list of another one, or none where that has none: a folder may have given it one of its own.
// False when the list can't be kept.
bool KeepAccessList(const ReplacementFile::OpenFile& from, const ReplacementFile::OpenFile& to)
{
    const char* const name = "system.posix_acl_access";
    QByteArray list(s_longestAccessList, '\0');
    const ssize_t size = ::fgetxattr(from.Get(), name, list.data(), static_cast<std::size_t>(list.size()));
    if (size >= 0)
        return ::fsetxattr(to.Get(), name, list.constData(), static_cast<std::size_t>(size), 0) == 0;
    if (errno != ENODATA)
        return errno == ENOTSUP;
    return ::fremovexattr(to.Get(), name) == 0 || errno == ENODATA || errno == ENOTSUP;
}

bool IsSameFile(const struct stat& a, const struct stat& b)
{
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

} // namespace

ReplacementFile::OpenFile::OpenFile(OpenFile&& other) noexcept
    : m_descriptor(std::exchange(other.m_descriptor, -1))
{
}

ReplacementFile::OpenFile& ReplacementFile::OpenFile::operator=(OpenFile&& other) noexcept
{
    std::swap(m_descriptor, other.m_descriptor);
    return *this;
}

ReplacementFile::OpenFile::~OpenFile()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

ReplacementFile::ReplacementFile(const QString& target)
{
    if (target.endsWith(QLatin1Char('/')))
        throw StorageError(QStringLiteral("names a folder, not a file"), ER_INVALID_ARGUMENT);
    const QString whole = CanonicalPath(target);
    const QFileInfo info(whole);
    m_targetName = QFile::encodeName(info.fileName());
    m_name = TemporaryName(m_targetName);
    m_folder = OpenFile(::open(QFile::encodeName(info.path()).constData(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!m_folder.IsOpen()) {
        if (errno == ENOENT)
            throw StorageError(QStringLiteral("the folder doesn't exist"), ER_NOT_FOUND);
        FailWithReason("can't be written");
    }
    LockTarget();
    for (int attempt = 0; !Make(); ++attempt) {
        if (attempt == s_mostAttempts)
            throw StorageError(s_isBeingSaved);
        ClearAbandoned();
    }
}

// What is there must be a file that this user may write, though it will be replaced and not written to.
void ReplacementFile::LockTarget()
{
    struct stat status = {};
    if (::fstatat(m_folder.Get(), m_targetName.constData(), &status, 0) != 0) {
        if (errno == ENOENT)
            return;
        FailWithReason("can't be written");
    }
    if (!S_ISREG(status.st_mode))
        throw StorageError(QStringLiteral("is not a regular file"));
    m_target = OpenFile(
        ::openat(m_folder.Get(), m_targetName.constData(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!m_target.IsOpen())
        FailWithReason("can't be written");
    if (::fstat(m_target.Get(), &status) != 0 || !S_ISREG(status.st_mode))
        throw StorageError(QStringLiteral("is not a regular file"));
    if (Lock(m_target) == LockResult::TakenBySomebodyElse)
        throw StorageError(s_isBeingSaved);
}

// False when something stands at the name, or when somebody has taken the new file for abandoned before it could be
// locked.
bool ReplacementFile::Make()
{
    // Until it has the mode of its target, the new file is for nobody else's eyes.
    const mode_t mode = m_target.IsOpen() ? 0600 : 0666;
    m_descriptor = OpenFile(::openat(m_folder.Get(), m_name.constData(),
                                     O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode));
    if (!m_descriptor.IsOpen()) {
        if (errno == EEXIST)
            return false;
        FailWithReason("can't be written");
    }
    m_isNamed = Lock(m_descriptor) != LockResult::TakenBySomebodyElse && StandsAtItsName(m_descriptor);
    return m_isNamed;
}

// Removes what stands at the name of the new file, if nobody is at work on it.
void ReplacementFile::ClearAbandoned()
{
    const QString text = QStringLiteral("'%1' stands in the way").arg(QFile::decodeName(m_name));
    const OpenFile found(::openat(m_folder.Get(), m_name.constData(),
                                  O_RDWR | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC));
    if (!found.IsOpen()) {
        if (errno == ENOENT)
            return; // its save has just ended
        FailWithReason(text);
    }
    struct stat status = {};
    if (::fstat(found.Get(), &status) != 0 || !S_ISREG(status.st_mode))
        throw StorageError(text + QStringLiteral(" and is not a regular file"));
    const LockResult lock = Lock(found);
    if (lock == LockResult::TakenBySomebodyElse ||
        (lock == LockResult::NoLocksHere && std::time(nullptr) - status.st_mtim.tv_sec < s_longSeconds))
        throw StorageError(s_isBeingSaved);
    // A save that has ended in between has given the file to its target, or another one has begun.
    if (StandsAtItsName(found) && ::unlinkat(m_folder.Get(), m_name.constData(), 0) != 0 && errno != ENOENT)
        FailWithReason(text);
}

bool ReplacementFile::StandsAtItsName(const OpenFile& file) const
{
    struct stat opened = {};
    struct stat named = {};
    return ::fstat(file.Get(), &opened) == 0 &&
           ::fstatat(m_folder.Get(), m_name.constData(), &named, AT_SYMLINK_NOFOLLOW) == 0 &&
           IsSameFile(opened, named);
}

ReplacementFile::~ReplacementFile()
{
    if (m_isNamed && StandsAtItsName(m_descriptor))
        ::unlinkat(m_folder.Get(), m_name.constData(), 0);
    Unlock(m_descriptor);
    Unlock(m_target);
}

void ReplacementFile::Commit()
{
    struct stat status = {};
    if (m_target.IsOpen() && ::fstat(m_target.Get(), &status) == 0) {
        // Only the superuser can give a file away; for others it becomes theirs, as with every editor.
        const bool isKept = ::fchown(m_descriptor.Get(), status.st_uid, status.st_gid) == 0 ||
                            ::fchown(m_descriptor.Get(), static_cast<uid_t>(-1), status.st_gid) == 0;
        mode_t mode = status.st_mode & (isKept ? 07777U : 0777U);
        // With a list, the mode's bits for the group are the most that anybody in the list may do.
        if (!KeepAccessList(m_target, m_descriptor))
            mode &= ~static_cast<mode_t>(S_IRWXG);
        if (::fchmod(m_descriptor.Get(), mode) != 0)
            FailWithReason("can't be replaced");
    }
    if (::fsync(m_descriptor.Get()) != 0)
        FailWithReason("can't be brought to the disk");
    if (!StandsAtItsName(m_descriptor))
        throw StorageError(QStringLiteral("the new file was taken away before it was complete"));
    if (::renameat(m_folder.Get(), m_name.constData(), m_folder.Get(), m_targetName.constData()) != 0)
        FailWithReason("can't be replaced");
    m_isNamed = false;
    SyncFolder(m_folder);
}

} // namespace Orrery
