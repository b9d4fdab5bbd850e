#pragma once

#include "foundations/property/PropertyObject.h"
#include "foundations/property/PropertyReference.h"
#include "foundations/property/SimpleProperty.h"
#include "foundations/storage/DataFile.h"
#include "foundations/storage/DataFileFactory.h"
#include "foundations/variant/BVariant.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <cstdint>
#include <functional>
#include <memory>

namespace Orrery::StorageTest {

/// A folder of a test's own on the disk, removed with everything in it.
class ScratchFolder
{
public:
    ScratchFolder();

    /// In this folder and not in the system's own for temporary files.
    explicit ScratchFolder(const QString& parent);

    QString Path(const QString& name) const;

    /// The names of what lies in it, hidden files included, sorted.
    QStringList Names() const;

    /// What unfinished saves have left here.
    QStringList Strays() const;

private:
    QTemporaryDir m_folder;
};

/// Collects the lines of the Qt log while it lives.
///
/// Threads: one at a time.
class LogCapture
{
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    QStringList Warnings() const;
};

/// Puts children into an empty folder.
using Builder = std::function<void(PropertyObject&)>;

/// How an open or a save went: its code, and what it said.
struct Outcome
{
    ERESULT code = ER_SUCCESS;
    QString why;
    std::shared_ptr<DataFile> file; ///< null when it wasn't opened
};

Outcome TryOpen(const QString& path, DataFile::OpenMode mode = DataFile::ReadOnly);
Outcome TrySave(DataFile& file);

/// Open, or throw std::runtime_error with the reason.
std::shared_ptr<DataFile> Open(const QString& path, DataFile::OpenMode mode = DataFile::ReadOnly);

/// A file of what `build` makes, saved and still open. Errors: throws std::runtime_error with the reason.
std::shared_ptr<DataFile> SaveNew(const QString& path, const Builder& build);

/// Save what `build` makes to a file, let go of it, open it again, and compare it with a second make of the same.
/// The first difference, or empty.
std::string RoundTrip(const Builder& build);

/// Insert a new folder, leaf or reference. Errors: throws std::runtime_error when it can't take its place.
PropertyObject* AddFolder(PropertyObject& parent, const QString& name);
SimpleProperty* AddValue(PropertyObject& parent, const QString& name, Brindle::Quay::BVariant value,
                         IsCellArray cellArray = IsCellArrayFalse);
PropertyReference* AddReference(PropertyObject& parent, const QString& name, const AbstractProperty& target);

/// The value of a leaf; throws std::runtime_error where there is none of that name.
Brindle::Quay::BVariant ValueOf(PropertyObject& folder, const QString& name);

/// Ask every array of a tree for its elements. What the first one says that can't be read, or nothing.
QString ReadArrays(const PropertyObject& folder);

QByteArray ReadFile(const QString& path);
void WriteFile(const QString& path, const QByteArray& bytes);

/// Whether a text can be shown to a person as one line that says what is wrong with this file.
bool IsOneLineAbout(const QString& why, const QString& path);

} // namespace Orrery::StorageTest
