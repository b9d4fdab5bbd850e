#include "foundations/storage/DataFile.h"

#include "foundations/storage/DataFileFactory.h"
#include "foundations/storage/OpenDataFiles_p.h"

#include <QFileInfo>

#include <utility>

namespace Orrery {

DataFile::DataFile(const QString& path, OpenMode mode)
    : m_path(path)
    , m_mode(mode)
    , m_root(new RootProperty(this))
{
}

DataFile::~DataFile()
{
    OpenDataFiles::Instance().Forget(this);
    DropRoot();
}

ERESULT DataFile::SaveAs(const QString& path, QString* why)
{
    const auto refuse = [why](ERESULT code, const QString& text) {
        if (why)
            *why = text;
        return code;
    };
    if (path.isEmpty())
        return refuse(ER_INVALID_ARGUMENT, QStringLiteral("no path to save to"));

    OpenDataFiles& open = OpenDataFiles::Instance();
    const std::shared_ptr<DataFile> other = open.Find(path);
    if (other && other.get() != this)
        return refuse(ER_ALREADY_EXISTS, path + QStringLiteral(": another open data file has this path"));
    if (other && m_mode == ReadOnly)
        return refuse(ER_FAILED, path + QStringLiteral(": the file was opened read-only"));

    const QString formerPath = std::exchange(m_path, path);
    const OpenMode formerMode = std::exchange(m_mode, ReadWrite);
    const ERESULT code = Save(why);
    if (code < 0) {
        m_path = formerPath;
        m_mode = formerMode;
        return code;
    }
    open.Moved(this);
    return code;
}

DataFile::RootProperty* DataFile::GetRoot()
{
    return m_root;
}

const DataFile::RootProperty* DataFile::GetRoot() const
{
    return m_root;
}

QString DataFile::GetPath() const
{
    return m_path;
}

DataFile::OpenMode DataFile::GetMode() const
{
    return m_mode;
}

bool DataFile::OwnsFileContents() const
{
    return m_ownsFileContents;
}

void DataFile::SetOwnsFileContents(bool owns)
{
    m_ownsFileContents = owns;
}

void DataFile::ReplaceRoot(std::unique_ptr<RootProperty> root)
{
    DropRoot();
    m_root = root.release();
}

void DataFile::DropRoot()
{
    RootProperty* const root = std::exchange(m_root, nullptr);
    if (!root)
        return;
    if (m_ownsFileContents)
        delete root;
    else
        root->m_file = nullptr;
}

DataFile::RootProperty::RootProperty(DataFile* file)
    : PropertyObject(QStringLiteral("Root"))
    , m_file(file)
{
}

DataFile::RootProperty::~RootProperty()
{
    // A host may destroy the root of a file that it holds; the file must not touch it again.
    if (m_file && m_file->m_root == this)
        m_file->m_root = nullptr;
}

const QString& DataFile::RootProperty::StaticType()
{
    static const QString type = QStringLiteral("RootProperty");
    return type;
}

const QString& DataFile::RootProperty::PropertyObjType() const
{
    return StaticType();
}

unsigned int DataFile::RootProperty::GetTypeFlags() const
{
    return PropertyObject::GetTypeFlags() | PropertyTypeFlagFileRoot;
}

AbstractProperty* DataFile::RootProperty::DoClone() const
{
    auto clone = std::make_unique<RootProperty>(nullptr);
    *static_cast<PropertyObject*>(clone.get()) = *this;
    return clone.release();
}

DataFile* DataFile::RootProperty::GetParentFile() const
{
    return m_file;
}

} // namespace Orrery
