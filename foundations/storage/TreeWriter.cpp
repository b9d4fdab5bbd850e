#include "foundations/storage/TreeWriter_p.h"

#include "foundations/property/NodeAccess_p.h"
#include "foundations/property/PropertyReference.h"
#include "foundations/property/SimpleProperty.h"
#include "foundations/storage/ElementTypes_p.h"
#include "foundations/storage/OpenDataFiles_p.h"
#include "foundations/storage/StorageError_p.h"

#include <QDebug>
#include <QFileInfo>
#include <QList>

#include <cstring>
#include <limits>

namespace Orrery {

using Brindle::Quay::BVariant;
using Brindle::Quay::DataOrdering;
using namespace CatalogueFormat;

namespace {

// A reference that tells the path of its file in its own way knows nothing else of it.
QString UidOfOpenFile(const QString& path)
{
    const std::shared_ptr<DataFile> file = OpenDataFiles::Instance().Find(path);
    return file ? file->GetFileUid() : QString();
}

// Whether a target that lives wouldn't be found again by what the reference tells of it. A path from the root of another
// tree would be looked up in the own one, if there is no file to go with it.
bool LeadsNowhere(const PropertyReference& reference, const QString& path, const QString& file)
{
    if (!path.isEmpty() && !(file.isEmpty() && path.startsWith(QLatin1Char('/'))))
        return false;
    const AbstractProperty* const target = reference.Resolve();
    return target && (path.isEmpty() || target->GetRootProperty() != reference.GetRootProperty());
}

bool LeadsUp(const QString& relativePath)
{
    return relativePath.startsWith(QStringLiteral("../"));
}

} // namespace

TreeWriter::TreeWriter(const QString& filePath)
    : m_folder(QFileInfo(filePath).absoluteDir())
{
}

void TreeWriter::Write(const PropertyObject& root)
{
    WriteFolder(root, NoParent);
}

std::size_t TreeWriter::AddRow(const AbstractProperty& node, Kind kind, std::uint32_t parent)
{
    if (catalogue.rows.size() >= NoParent)
        throw StorageError(QStringLiteral("the tree has too many nodes"));
    Row row;
    row.parent = parent;
    row.kind = kind;
    row.flags = node.GetPropertyFlags();
    catalogue.SetNames(&row, node.GetName(), node.PropertyObjType());
    catalogue.rows.push_back(row);
    return catalogue.rows.size() - 1;
}

// Recursion is bounded: a tree has 1,000 levels at the most.
void TreeWriter::WriteFolder(const PropertyObject& folder, std::uint32_t parent)
{
    const auto row = static_cast<std::uint32_t>(AddRow(folder, KindFolder, parent));
    QList<AbstractProperty*> children;
    folder.GetPropertyList(&children);
    for (const AbstractProperty* const child : qAsConst(children)) {
        if (child && child->IsSerializable())
            WriteNode(*child, row);
    }
}

void TreeWriter::WriteNode(const AbstractProperty& node, std::uint32_t parent)
{
    // By the class itself: a host's override of the flags may claim anything.
    if (const PropertyObject* const folder = Internal::NodeAccess::asFolder(node))
        WriteFolder(*folder, parent);
    else if (Internal::NodeAccess::isSimple(node))
        WriteSimple(static_cast<const SimpleProperty&>(node), parent);
    else if (Internal::NodeAccess::isReference(node))
        WriteReference(static_cast<const PropertyReference&>(node), parent);
    else
        throw StorageError(node.GetFullPath() + QStringLiteral(": a node of type '") +
                           node.PropertyObjType() + QStringLiteral("' can't be saved"));
}

void TreeWriter::WriteSimple(const SimpleProperty& simple, std::uint32_t parent)
{
    const std::size_t index = AddRow(simple, KindSimple, parent);
    Row& row = catalogue.rows[index];
    row.cellArray = simple.GetValueIsCellArray() == IsCellArrayFalse ? 0 : 1;

    const BVariant value = simple.GetValue();
    if (value.isNull())
        return;
    const std::uint16_t element = value.getWellKnownType().code();
    if (!ElementTypes::IsKnown(element))
        throw StorageError(simple.GetFullPath() +
                           QStringLiteral(": a value of a run-time type can't be saved"));
    row.element = element;
    row.ordering = value.getDataOrdering() == DataOrdering::RowMajor ? 0 : 1;
    if (!value.isScalar()) {
        row.form = FormArray;
        arrays.push_back({index, value, &simple});
    } else if (element == ElementTypes::TextCode) {
        catalogue.SetText(&row, *static_cast<const std::string*>(value.constData()));
    } else {
        row.form = FormInline;
        std::memcpy(row.value, value.constData(), ElementTypes::Size(element));
    }
}

void TreeWriter::WriteReference(const PropertyReference& reference, std::uint32_t parent)
{
    const std::size_t index = AddRow(reference, KindReference, parent);
    ReferenceRecord record;
    record.path = reference.ReferencePath();
    const QString file = reference.ReferenceFilePath();
    if (LeadsNowhere(reference, record.path, file)) {
        qWarning().noquote().nospace()
            << "reference " << reference.GetFullPath() << " can't tell its path and is saved as unresolved";
        return;
    }
    if (record.path.isEmpty())
        return;
    if (!file.isEmpty()) {
        PropertyReference::TargetFile known = reference.ReferenceFile();
        if (file != known.path && file != known.otherPath)
            known = PropertyReference::TargetFile{file, QString(), QString(), UidOfOpenFile(file)};
        const QString& absolute = known.otherPath.isEmpty() ? known.path : known.otherPath;
        record.absoluteFile = QFileInfo(absolute).absoluteFilePath();
        record.relativeFile = RelativeFile(known.path);
        record.fileType = reference.ReferenceFileType();
        record.fileUid = known.uid;
    }
    catalogue.SetReference(&catalogue.rows[index], record);
}

// Many references in a row lead into one file.
const QString& TreeWriter::RelativeFile(const QString& path)
{
    if (m_lastFile != path) {
        m_lastFile = path;
        m_lastRelative = FindRelativeFile(QFileInfo(path));
    }
    return m_lastRelative;
}

// What lies in one folder may be moved as one, so another file that lies in or below that of this file is named from
// there, also where links make the two folders look like different ones.
QString TreeWriter::FindRelativeFile(const QFileInfo& file) const
{
    QString relative = m_folder.relativeFilePath(file.absoluteFilePath());
    if (!LeadsUp(relative))
        return relative;
    const QString folder = QFileInfo(file.absolutePath()).canonicalFilePath();
    const QString ownFolder = m_folder.canonicalPath();
    if (folder.isEmpty() || ownFolder.isEmpty())
        return relative;
    const QString direct = QDir(ownFolder).relativeFilePath(QDir(folder).filePath(file.fileName()));
    return LeadsUp(direct) ? relative : direct;
}

} // namespace Orrery
