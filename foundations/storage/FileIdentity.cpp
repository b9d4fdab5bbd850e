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
    QFileInfo info(path);
    QString whole = info.canonicalFilePath();
    if (!whole.isEmpty())
        return whole;
    // A chain of links to a file that isn't there yet names the file it leads to; one that leads nowhere ends.
    constexpr int longestChain = 40;
    for (int i = 0; i < longestChain && info.isSymLink(); ++i)
        info = QFileInfo(info.symLinkTarget());
    const QString folder = QFileInfo(info.absolutePath()).canonicalFilePath();
    if (folder.isEmpty())
        return QDir::cleanPath(info.absoluteFilePath());
    return QDir(folder).filePath(info.fileName());
}

} // namespace Orrery
