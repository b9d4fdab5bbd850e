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

// Whether an open file can also serve a request for `mode`; false sets `*why`.
bool CanServe(const DataFile& open, DataFile::OpenMode mode, QString* why)
{
    if (mode == DataFile::ReadOnly)
        return true;
    if (mode == DataFile::Create) {
        Refuse(ER_ALREADY_EXISTS, why, open.GetPath() + QStringLiteral(": the file is open already"));
        return false;
    }
    if (open.GetMode() == DataFile::ReadOnly) {
        Refuse(ER_ALREADY_EXISTS, why,
               open.GetPath() + QStringLiteral(": the file is open read-only already"));
        return false;
    }
    return true;
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
    const Creator creator = FindCreator(fileType);
    if (!creator)
        return Refuse(ER_INVALID_ARGUMENT, why,
                      path + QStringLiteral(": unknown file type '") + fileType + QLatin1Char('\''));

    // One request at a time, or two threads would load one file twice. A file that opens another one while it
    // loads comes in again on the same thread.
    const std::lock_guard<std::recursive_mutex> lock(StorageMutex());

    OpenDataFiles& openFiles = OpenDataFiles::Instance();
    if (std::shared_ptr<DataFile> open = openFiles.Find(path); open && open->GetRoot()) {
        if (open->GetFileType() != fileType)
            return Refuse(ER_INVALID_ARGUMENT, why,
                          path + QStringLiteral(": the file is open as '") + open->GetFileType() +
                              QLatin1Char('\''));
        const bool stale = open->GetMode() == DataFile::ReadOnly && !openFiles.IsUnchangedOnDisk(open.get());
        if (!stale) {
            if (!CanServe(*open, mode, why))
                return ER_ALREADY_EXISTS;
            *out = std::move(open);
            return ER_SUCCESS;
        }
    }

    const FileIdentity identity = FileIdentity::Of(path);
    std::shared_ptr<DataFile> file(creator(path, mode));
    if (!file)
        return Refuse(ER_FAILED, why, path + QStringLiteral(": the file type can't be opened"));
    if (mode != DataFile::Create) {
        QString reason;
        const ERESULT code = file->Load(&reason);
        if (code < 0) {
            qWarning().noquote().nospace() << reason;
            return Refuse(code, why, reason);
        }
    }
    openFiles.Add(file, identity);
    *out = std::move(file);
    return ER_SUCCESS;
}

std::shared_ptr<DataFile> DataFileFactory::FindOpen(const QString& path) const
{
    return OpenDataFiles::Instance().Find(path);
}

} // namespace Orrery
