#include "foundations/storage/FileIdentity_p.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>

namespace Orrery {

FileIdentity FileIdentity::Of(const QString& path)
{
    FileIdentity identity;
    struct stat status = {};
    if (::stat(QFile::encodeName(path).constData(), &status) != 0)
        return identity;
    identity.device = static_cast<std::uint64_t>(status.st_dev);
    identity.inode = static_cast<std::uint64_t>(status.st_ino);
    identity.size = static_cast<std::uint64_t>(status.st_size);
    identity.seconds = static_cast<std::int64_t>(status.st_mtim.tv_sec);
    identity.nanoseconds = static_cast<std::int64_t>(status.st_mtim.tv_nsec);
    return identity;
}

bool FileIdentity::operator==(const FileIdentity& other) const
{
    return device == other.device && inode == other.inode && size == other.size && seconds == other.seconds &&
           nanoseconds == other.nanoseconds;
}

QString CanonicalPath(const QString& path)
{
    const QFileInfo info(path);
    const QString whole = info.canonicalFilePath();
    if (!whole.isEmpty())
        return whole;
    // A link to a file that isn't there yet names the file it leads to.
    if (info.isSymLink()) {
        const QFileInfo target(info.symLinkTarget());
        if (!target.isSymLink())
            return CanonicalPath(target.filePath());
    }
    const QString folder = QFileInfo(info.absolutePath()).canonicalFilePath();
    if (folder.isEmpty())
        return QDir::cleanPath(info.absoluteFilePath());
    return QDir(folder).filePath(info.fileName());
}

} // namespace Orrery
