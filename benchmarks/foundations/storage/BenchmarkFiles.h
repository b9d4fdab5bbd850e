#pragma once

#include "foundations/property/PropertyObject.h"
#include "foundations/storage/DataFile.h"
#include "foundations/variant/BVariant.h"

#include <QString>
#include <QTemporaryDir>

#include <cstddef>
#include <memory>

namespace Orrery::StorageBenchmark {

/// A folder on the disk for the files of one benchmark, those of its peers included.
class Folder
{
public:
    QString Path(const QString& name) const { return m_folder.filePath(name); }

private:
    QTemporaryDir m_folder;
};

/// Open a data file. Errors: throws std::runtime_error with the reason.
std::shared_ptr<DataFile> Open(const QString& path, DataFile::OpenMode mode);

/// Save it. Errors: throws std::runtime_error with the reason.
void Save(DataFile& file);

void AddValue(PropertyObject& folder, const QString& name, Brindle::Quay::BVariant value);

/// Bring a written file to the disk and into the place of another: what every safe save ends with.
///
/// Errors: throws std::runtime_error.
void SyncAndRename(const QString& from, const QString& to);

/// Write these bytes to a new file, and sync and rename it.
void PlainSave(const QString& from, const QString& to, const void* data, std::size_t bytes);

/// Read a file of that length into memory that the process hasn't used before.
void PlainLoad(const QString& path, std::size_t bytes);

} // namespace Orrery::StorageBenchmark
