#include "foundations/storage/DataFileFactory.h"

#include "foundations/storage/FileIdentity_p.h"
#include "foundations/storage/Hdf5DataFile_p.h"
#include "foundations/storage/OneLine_p.h"
#include "foundations/storage/OpenDataFiles_p.h"
#include "foundations/storage/StorageMutex_p.h"

#include <QDebug>
#include <QHash>

#include <algorithm>
#include <mutex>
#include <utility>

namespace Orrery {

namespace {

// The creators by file type. Never destroyed: a data file may be opened by a static's destructor.
struct FileTypes
{
    static FileTypes& Instance()
    {
        static FileTypes* const instance = new FileTypes;
        return *instance;
    }

    std::mutex mutex;
    QHash<QString, DataFileFactory::Creator> creators{{Hdf5DataFile::FileType(), &Hdf5DataFile::Create}};
};

DataFileFactory::Creator FindCreator(const QString& fileType)
{
    FileTypes& types = FileTypes::Instance();
    const std::lock_guard<std::mutex> lock(types.mutex);
    return types.creators.value(fileType, nullptr);
}

ERESULT Refuse(ERESULT code, QString* why, const QString& text)
{
    if (why)
        *why = OneLine(text);
    return code;
}

// The open file of that path, if it is to be used; null where a file has to be opened anew.
std::shared_ptr<DataFile> FindUsable(const QString& path)
{
    const OpenDataFiles& openFiles = OpenDataFiles::Instance();
    std::shared_ptr<DataFile> open = openFiles.Find(path);
    if (!open || !open->GetRoot())
        return nullptr;
    const bool stale = open->GetMode() == DataFile::ReadOnly && !openFiles.IsUnchangedOnDisk(open.get());
    return stale ? nullptr : open;
}

ERESULT RefuseOtherType(const DataFile& open, const QString& path, QString* why)
{
    return Refuse(ER_INVALID_ARGUMENT, why,
                  path + QStringLiteral(": the file is open as '") + open.GetFileType() + QLatin1Char('\''));
}

} // namespace

DataFileFactory& DataFileFactory::Instance()
{
    static DataFileFactory instance;
    return instance;
}

ERESULT DataFileFactory::RegisterFileType(const QString& fileType, Creator creator)
{
    if (fileType.isEmpty() || !creator)
        return ER_INVALID_ARGUMENT;
    FileTypes& types = FileTypes::Instance();
    const std::lock_guard<std::mutex> lock(types.mutex);
    if (types.creators.contains(fileType))
        return ER_ALREADY_EXISTS;
    types.creators.insert(fileType, creator);
    return ER_SUCCESS;
}

QStringList DataFileFactory::GetFileTypes() const
{
    FileTypes& types = FileTypes::Instance();
    const std::lock_guard<std::mutex> lock(types.mutex);
    QStringList names = types.creators.keys();
    names.sort();
    return names;
}

ERESULT DataFileFactory::Open(const QString& path, DataFile::OpenMode mode, std::shared_ptr<DataFile>* out,
                              QString* why, const QString& fileType)
{
    if (!out)
        return Refuse(ER_INVALID_ARGUMENT, why, QStringLiteral("no place for the opened file"));
    if (path.isEmpty())
        return Refuse(ER_INVALID_ARGUMENT, why, QStringLiteral("no path to open"));
    if (!FindCreator(fileType))
        return Refuse(ER_INVALID_ARGUMENT, why,
                      path + QStringLiteral(": unknown file type '") + fileType + QLatin1Char('\''));

    // One request at a time, or two threads would load one file twice. A file that opens another one while it
    // loads comes in again on the same thread.
    const std::lock_guard<std::recursive_mutex> lock(StorageMutex());
    if (std::shared_ptr<DataFile> open = OpenDataFiles::Instance().Find(path);
        open && open->GetRoot() && open->GetFileType() != fileType)
        return RefuseOtherType(*open, path, why);
    if (std::shared_ptr<DataFile> open = FindUsable(path))
        return UseOpen(std::move(open), mode, out, why);
    return OpenNew(path, mode, fileType, Client::Host, out, why);
}

ERESULT DataFileFactory::OpenForReference(const QString& path, const QString& fileType,
                                          std::shared_ptr<DataFile>* out, bool* isNew, QString* why)
{
    if (!FindCreator(fileType))
        return Refuse(ER_INVALID_ARGUMENT, why,
                      QStringLiteral("unknown file type '") + fileType + QLatin1Char('\''));
    const std::lock_guard<std::recursive_mutex> lock(StorageMutex());
    *out = FindUsable(path);
    *isNew = !*out;
    if (*isNew)
        return OpenNew(path, DataFile::ReadOnly, fileType, Client::Reference, out, why);
    return (*out)->GetFileType() == fileType ? ER_SUCCESS : RefuseOtherType(**out, path, why);
}

ERESULT DataFileFactory::UseOpen(std::shared_ptr<DataFile> open, DataFile::OpenMode mode,
                                 std::shared_ptr<DataFile>* out, QString* why)
{
    if (mode == DataFile::Create)
        return Refuse(ER_ALREADY_EXISTS, why, open->GetPath() + QStringLiteral(": the file is open already"));
    if (mode == DataFile::ReadWrite && open->GetMode() == DataFile::ReadOnly) {
        if (!open->CanTurnReadWrite() || !OpenDataFiles::Instance().IsHeldByReferencesOnly(open))
            return Refuse(ER_ALREADY_EXISTS, why,
                          open->GetPath() + QStringLiteral(": the file is open read-only already"));
        open->m_mode = DataFile::ReadWrite;
    }
    *out = std::move(open);
    return ER_SUCCESS;
}

ERESULT DataFileFactory::OpenNew(const QString& path, DataFile::OpenMode mode, const QString& fileType,
                                 Client client, std::shared_ptr<DataFile>* out, QString* why)
{
    const QString canonical = CanonicalPath(path);
    if (!OpenDataFiles::Instance().CanLoad(canonical))
        return Refuse(ER_FAILED, why,
                      path + QStringLiteral(": the file, or too many others, are just being loaded"));
    const FileIdentity identity = FileIdentity::Of(path);
    std::shared_ptr<DataFile> file(FindCreator(fileType)(path, mode));
    if (!file)
        return Refuse(ER_FAILED, why, path + QStringLiteral(": the file type can't be opened"));
    file->m_openedAs = fileType;
    if (mode != DataFile::Create) {
        QString reason;
        const OpenDataFiles::Loading loading(canonical);
        const ERESULT code = file->Load(&reason);
        if (code < 0) {
            if (client == Client::Host)
                qWarning().noquote().nospace() << reason;
            return Refuse(code, why, reason);
        }
    }
    OpenDataFiles::Instance().Add(file, identity, client == Client::Reference);
    *out = std::move(file);
    return ER_SUCCESS;
}

std::shared_ptr<DataFile> DataFileFactory::FindOpen(const QString& path) const
{
    return OpenDataFiles::Instance().Find(path);
}

} // namespace Orrery
