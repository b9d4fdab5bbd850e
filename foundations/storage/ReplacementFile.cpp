#include "foundations/storage/ReplacementFile_p.h"

#include "foundations/storage/FileIdentity_p.h"
#include "foundations/storage/StorageError_p.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QUuid>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Orrery {

namespace {

const QString s_suffix = QStringLiteral(".saving");

// A file name may have 255 bytes; the target's name, in UTF-8, may fill them.
constexpr int s_longestBase = 48;

class Descriptor
{
public:
    Descriptor(const QString& path, int flags)
        : m_fd(::open(QFile::encodeName(path).constData(), flags | O_CLOEXEC))
    {
    }
    ~Descriptor()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int Fd() const { return m_fd; }

private:
    int m_fd;
};

[[noreturn]] void FailWithReason(const char* what)
{
    const int reason = errno;
    throw StorageError(QString::fromLatin1(what) + QStringLiteral(": ") +
                       QString::fromLocal8Bit(std::strerror(reason)));
}

// Some file systems can't do this for folders, and say EINVAL; there the rename is as durable as it gets.
void SyncFolder(const QString& path)
{
    const Descriptor folder(path, O_RDONLY | O_DIRECTORY);
    if (folder.Fd() < 0 || (::fsync(folder.Fd()) != 0 && errno != EINVAL))
        FailWithReason("is saved, but may not survive a power failure");
}

QString TemporaryPrefix(const QFileInfo& target)
{
    QString base = target.fileName().left(s_longestBase);
    if (!base.isEmpty() && base.at(base.size() - 1).isHighSurrogate())
        base.chop(1); // half a character has no name on disk
    return QLatin1Char('.') + base + QLatin1Char('.');
}

// Whether the process that the name tells of is gone. Its lock on the file is the second witness: a process of
// another machine can't be asked.
bool IsAbandoned(const QFileInfo& file, const QString& prefix)
{
    const QString rest = file.fileName().mid(prefix.size());
    bool isNumber = false;
    const int process = rest.section(QLatin1Char('-'), 0, 0).toInt(&isNumber);
    if (!isNumber || process <= 0 || ::kill(process, 0) == 0 || errno != ESRCH)
        return false;
    const Descriptor descriptor(file.filePath(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW);
    return descriptor.Fd() >= 0 && ::flock(descriptor.Fd(), LOCK_EX | LOCK_NB) == 0;
}

void ClearAbandoned(const QFileInfo& target)
{
    const QString prefix = TemporaryPrefix(target);
    const QFileInfoList files = target.dir().entryInfoList(QDir::Files | QDir::Hidden | QDir::System);
    for (const QFileInfo& file : files) {
        const QString name = file.fileName();
        if (name.startsWith(prefix) && name.endsWith(s_suffix) && IsAbandoned(file, prefix))
            QFile::remove(file.filePath());
    }
}

} // namespace

ReplacementFile::ReplacementFile(const QString& target)
    : m_target(CanonicalPath(target))
{
    if (target.endsWith(QLatin1Char('/')))
        throw StorageError(QStringLiteral("names a folder, not a file"), ER_INVALID_ARGUMENT);
    const QFileInfo info(m_target);
    const QByteArray encoded = QFile::encodeName(m_target);
    struct stat status = {};
    if (::stat(encoded.constData(), &status) == 0) {
        if (!S_ISREG(status.st_mode))
            throw StorageError(QStringLiteral("is not a regular file"));
        if (::access(encoded.constData(), W_OK) != 0)
            FailWithReason("can't be written");
    } else if (errno != ENOENT) {
        FailWithReason("can't be written");
    }
    if (!info.dir().exists())
        throw StorageError(QStringLiteral("the folder doesn't exist"), ER_NOT_FOUND);
    ClearAbandoned(info);
    m_path = info.dir().filePath(TemporaryPrefix(info) + QString::number(::getpid()) + QLatin1Char('-') +
                                 QUuid::createUuid().toString(QUuid::Id128).left(12) + s_suffix);
    m_descriptor = ::open(QFile::encodeName(m_path).constData(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (m_descriptor < 0)
        FailWithReason("can't be written");
    ::flock(m_descriptor, LOCK_EX | LOCK_NB); // tells other processes that somebody is at it; see IsAbandoned
}

ReplacementFile::~ReplacementFile()
{
    if (!m_committed)
        QFile::remove(m_path);
    ::close(m_descriptor);
}

void ReplacementFile::Commit()
{
    const QByteArray from = QFile::encodeName(m_path);
    const QByteArray to = QFile::encodeName(m_target);
    struct stat status = {};
    if (::stat(to.constData(), &status) == 0 && ::fchmod(m_descriptor, status.st_mode & 07777U) != 0)
        FailWithReason("can't be replaced");
    if (::fsync(m_descriptor) != 0)
        FailWithReason("can't be brought to the disk");
    if (std::rename(from.constData(), to.constData()) != 0)
        FailWithReason("can't be replaced");
    m_committed = true;
    SyncFolder(QFileInfo(m_target).path());
}

} // namespace Orrery
