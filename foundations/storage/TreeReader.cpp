#include "foundations/storage/TreeReader_p.h"

#include "foundations/property/BindReferences_p.h"
#include "foundations/property/PropertyObjectFactory.h"
#include "foundations/property/PropertyReference.h"
#include "foundations/property/SimpleProperty.h"
#include "foundations/storage/ElementTypes_p.h"
#include "foundations/storage/StorageError_p.h"

#include <QDir>
#include <QFileInfo>

#include <exception>

namespace Orrery {

using Brindle::Quay::BVariant;
using Brindle::Quay::DataOrdering;
using namespace CatalogueFormat;

TreeReader::TreeReader(const Catalogue& catalogue, const QString& filePath, ArraySource arrays)
    : m_catalogue(catalogue)
    , m_folder(QFileInfo(filePath).absoluteDir())
    , m_arrays(std::move(arrays))
{
}

void TreeReader::Read(DataFile::RootProperty* root)
{
    root->SetPropertyFlags(m_catalogue.rows[0].flags);
    m_open.clear();
    m_open.emplace_back(std::size_t(0), PropertyHandle(root));
    for (std::size_t i = 1; i < m_catalogue.rows.size(); ++i) {
        const Row& row = m_catalogue.rows[i];
        Finish(row.parent);
        std::unique_ptr<AbstractProperty> node = MakeNode(i);
        node->SetPropertyFlags(row.flags);
        const PropertyHandle handle(node.get());
        if (OpenFolder(i).InsertOrReplaceProperty(node.get()) < 0 && handle.Get())
            Fail(i, QStringLiteral("can't take its place in the tree"));
        static_cast<void>(node.release()); // the tree's now
        if (row.kind == KindFolder)
            m_open.emplace_back(i, handle);
    }
    Finish(NoParent);
    Internal::bindReferences(*root); // from here on they follow their targets
}

// Handlers of a host run while its objects are filled, and one of them may have destroyed the folder.
PropertyObject& TreeReader::OpenFolder(std::size_t index) const
{
    AbstractProperty* const folder = m_open.back().second.Get();
    if (!folder)
        Fail(index, QStringLiteral("its folder was destroyed while it was loaded"));
    return *static_cast<PropertyObject*>(folder);
}

// Ends the folders that have all their children, down to the one that gets the next child.
void TreeReader::Finish(std::size_t parent)
{
    while (!m_open.empty() && m_open.back().first != parent) {
        const std::size_t index = m_open.back().first;
        PropertyObject& folder = OpenFolder(index);
        m_open.pop_back();
        try {
            folder.OnDeserialization();
        } catch (const OrreryException& error) {
            Fail(index, QStringLiteral("its object refuses it, with the code %1").arg(error.GetResult()),
                 error.GetResult());
        } catch (const std::exception& error) {
            Fail(index, QString::fromUtf8(error.what()));
        } catch (...) {
            Fail(index, QStringLiteral("an unknown exception"));
        }
    }
}

std::unique_ptr<AbstractProperty> TreeReader::MakeNode(std::size_t index)
{
    const Row& row = m_catalogue.rows[index];
    switch (row.kind) {
    case KindFolder:
        return MakeFolder(index);
    case KindReference:
        return MakeReference(row);
    default:
        return MakeSimple(index);
    }
}

std::unique_ptr<AbstractProperty> TreeReader::MakeFolder(std::size_t index) const
{
    const Row& row = m_catalogue.rows[index];
    const QString type = m_catalogue.Type(row);
    std::unique_ptr<PropertyObject> folder;
    try {
        folder.reset(PropertyObjectFactory::Instance().CreateOrKeepType(type));
    } catch (const std::exception& error) {
        Fail(index, QStringLiteral("an object of type '") + type + QStringLiteral("' can't be made: ") +
                        QString::fromUtf8(error.what()));
    } catch (...) {
        Fail(index, QStringLiteral("an object of type '") + type +
                        QStringLiteral("' can't be made: an unknown exception"));
    }
    folder->SetName(m_catalogue.Name(row));
    return folder;
}

std::unique_ptr<AbstractProperty> TreeReader::MakeSimple(std::size_t index) const
{
    const Row& row = m_catalogue.rows[index];
    const DataOrdering ordering = row.ordering == 0 ? DataOrdering::RowMajor : DataOrdering::ColumnMajor;
    BVariant value;
    if (row.form == FormInline) {
        value = ElementTypes::MakeScalar(row.element, row.value, ordering);
    } else if (row.form == FormText) {
        value = BVariant::scalar<std::string>(m_catalogue.Text(row), ordering);
    } else if (row.form == FormArray) {
        try {
            value = m_arrays(index);
        } catch (const std::exception& error) {
            Fail(index, QString::fromUtf8(error.what()));
        }
    }
    auto simple = std::make_unique<SimpleProperty>(m_catalogue.Name(row));
    simple->SetValue(std::move(value), row.cellArray == 0 ? IsCellArrayFalse : IsCellArrayTrue);
    return simple;
}

std::unique_ptr<AbstractProperty> TreeReader::MakeReference(const Row& row)
{
    auto reference = std::make_unique<PropertyReference>(m_catalogue.Name(row));
    if (row.form == FormReference) {
        const ReferenceRecord record = m_catalogue.Reference(row);
        reference->RestorePath(record.path, FileOf(record));
    }
    return reference;
}

// The disk isn't asked yet. Many references in a row lead into one file; they share the texts.
const PropertyReference::TargetFile& TreeReader::FileOf(const ReferenceRecord& record)
{
    const bool isSame = record.relativeFile == m_lastRecord.relativeFile &&
                        record.absoluteFile == m_lastRecord.absoluteFile &&
                        record.fileType == m_lastRecord.fileType && record.fileUid == m_lastRecord.fileUid;
    if (isSame)
        return m_lastFile;
    m_lastRecord = record;
    m_lastFile = {record.absoluteFile, QString(), record.fileType, record.fileUid};
    if (record.relativeFile.isEmpty())
        return m_lastFile;
    // A folder of files may have been moved as one, so the relative path comes first.
    m_lastFile.path = QDir::cleanPath(m_folder.absoluteFilePath(record.relativeFile));
    if (m_lastFile.path != record.absoluteFile)
        m_lastFile.otherPath = record.absoluteFile;
    return m_lastFile;
}

void TreeReader::Fail(std::size_t index, const QString& what, ERESULT code) const
{
    throw StorageError(m_catalogue.Path(index) + QStringLiteral(": ") + what, code);
}

} // namespace Orrery
