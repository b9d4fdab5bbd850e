#include "foundations/storage/TreeCheck_p.h"

#include "foundations/property/NodeAccess_p.h"
#include "foundations/storage/CatalogueFormat_p.h"
#include "foundations/storage/ElementTypes_p.h"
#include "foundations/storage/OneLine_p.h"
#include "foundations/variant/VariantOperations.h"

#include <QList>

#include <algorithm>
#include <exception>
#include <vector>

namespace Orrery {

namespace {

std::uint64_t BytesOf(const BVariant& value)
{
    if (value.isNull() || value.isScalar())
        return 0;
    return value.elementCount() * ElementTypes::Size(value.getWellKnownType().code());
}

// What keeps an array from being read; empty if nothing does. What listeners throw must not pass through here.
template <class Operation>
QString ReasonUnread(Operation operation)
{
    try {
        operation();
        return QString();
    } catch (const std::exception& error) {
        return QString::fromUtf8(error.what());
    }
}

} // namespace

TreeCheck::TreeCheck(const QString& filePath, const DataFileCheck::Report& report,
                     const DataFileCheck::Progress& progress)
    : m_filePath(filePath)
    , m_report(report)
    , m_progress(progress)
{
}

void TreeCheck::Look(const PropertyObject& root, DataFileCheck::Summary* summary)
{
    Count(root, summary);
    LookBelow(root);
}

// Recursion is bounded, here and below: a tree has 1,000 levels at the most.
void TreeCheck::Count(const PropertyObject& folder, DataFileCheck::Summary* summary)
{
    QList<AbstractProperty*> children;
    folder.GetPropertyList(&children);
    for (const AbstractProperty* const child : qAsConst(children)) {
        if (const PropertyObject* const below = Internal::NodeAccess::asFolder(*child)) {
            ++summary->folders;
            Count(*below, summary);
        } else if (Internal::NodeAccess::isSimple(*child)) {
            ++summary->values;
            m_all += BytesOf(static_cast<const SimpleProperty*>(child)->GetValueRef());
        } else if (Internal::NodeAccess::isReference(*child)) {
            ++summary->references;
        }
    }
}

void TreeCheck::LookBelow(const PropertyObject& folder)
{
    QList<AbstractProperty*> children;
    folder.GetPropertyList(&children);
    for (const AbstractProperty* const child : qAsConst(children)) {
        if (const PropertyObject* const below = Internal::NodeAccess::asFolder(*child))
            LookBelow(*below);
        else if (Internal::NodeAccess::isSimple(*child))
            LookAtValue(static_cast<const SimpleProperty&>(*child));
        else if (Internal::NodeAccess::isReference(*child))
            LookAtReference(static_cast<const PropertyReference&>(*child));
    }
}

void TreeCheck::LookAtValue(const SimpleProperty& simple)
{
    const BVariant& value = simple.GetValueRef();
    if (value.isNull() || value.isScalar())
        return; // read with the structure
    const std::uint64_t end = m_done + BytesOf(value);
    const QString reason = ReadArray(value);
    m_done = end;
    if (!reason.isEmpty())
        Tell(DataFileCheck::Error, simple, reason);
}

// Piece by piece into one buffer, so that an array needs not fit the memory.
QString TreeCheck::ReadArray(const BVariant& array)
{
    const std::uint64_t size = ElementTypes::Size(array.getWellKnownType().code());
    const std::uint64_t count = array.elementCount();
    if (size == 0 || count == 0)
        return ReasonUnread([&] { array.constData(); }); // texts
    const std::uint64_t step = CatalogueFormat::ChecksumBlock / size;
    std::vector<char> buffer(std::min(step, count) * size);
    for (std::uint64_t at = 0; at < count; at += step) {
        const std::uint64_t run = std::min(step, count - at);
        QString reason = ReasonUnread([&] { copyElements(array, at, run, buffer.data()); });
        if (!reason.isEmpty())
            return reason;
        m_done += run * size;
        if (m_progress)
            m_progress(m_done, m_all);
    }
    return QString();
}

void TreeCheck::LookAtReference(const PropertyReference& reference)
{
    const QString path = reference.ReferencePath();
    if (path.isEmpty() || reference.ResolveConst())
        return;
    const QString file = reference.ReferenceFilePath();
    Tell(DataFileCheck::Warning, reference,
         QStringLiteral("the reference leads nowhere: to ") + path +
             (file.isEmpty() ? QString() : QStringLiteral(" in the file ") + file));
}

void TreeCheck::Tell(DataFileCheck::Severity severity, const AbstractProperty& node, const QString& text)
{
    QString line = OneLine(text);
    const QString path = OneLine(node.GetFullPath());
    const QString beginning = OneLine(m_filePath) + QStringLiteral(": ") + path + QStringLiteral(": ");
    if (line.startsWith(beginning))
        line.remove(0, beginning.size());
    m_report({severity, path, line});
}

} // namespace Orrery
