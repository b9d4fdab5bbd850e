#include "tests/foundations/storage/CompareTrees.h"

#include "foundations/property/PropertyReference.h"
#include "foundations/property/SimpleProperty.h"

#include <QList>

#include <cstdint>
#include <cstring>
#include <sstream>

namespace Orrery::StorageTest {

using Brindle::Quay::BVariant;

namespace {

constexpr std::uint16_t s_text = 16;

// Bytes of one element, from the code's own fields: the storage class in the low bits, one bit for complex.
std::size_t ElementBytes(std::uint16_t code)
{
    constexpr std::size_t sizes[] = {0, 8, 4, 1, 1, 2, 4, 8};
    if (code == 0x0030 || code == 0x0040)
        return 16;
    const std::size_t part = sizes[code & 0x7U];
    return (code & 0x8000U) != 0 ? 2 * part : part;
}

template <class T>
std::string Differ(const char* what, const T& original, const T& copy)
{
    if (original == copy)
        return {};
    std::ostringstream text;
    text << what << ": " << original << " became " << copy;
    return text.str();
}

std::string DifferText(const char* what, const QString& original, const QString& copy)
{
    if (original == copy)
        return {};
    return std::string(what) + ": '" + original.toStdString() + "' became '" + copy.toStdString() + "'";
}

std::string Shape(const BVariant& value)
{
    std::ostringstream text;
    text << (value.isScalar() ? "scalar" : "array") << " {";
    for (const std::uint64_t size : value.getDimensions())
        text << size << ' ';
    text << "} " << (value.getDataOrdering() == Brindle::Quay::DataOrdering::RowMajor ? "row" : "column");
    return text.str();
}

std::string CompareElements(const BVariant& original, const BVariant& copy)
{
    const std::uint64_t count = original.elementCount();
    if (count == 0)
        return {};
    if (original.getWellKnownType().code() == s_text) {
        const auto* const from = static_cast<const std::string*>(original.constData());
        const auto* const to = static_cast<const std::string*>(copy.constData());
        for (std::uint64_t i = 0; i < count; ++i) {
            if (from[i] != to[i])
                return "text " + std::to_string(i) + " differs";
        }
        return {};
    }
    const std::size_t size = ElementBytes(original.getWellKnownType().code());
    const auto* const from = static_cast<const char*>(original.constData());
    const auto* const to = static_cast<const char*>(copy.constData());
    for (std::uint64_t i = 0; i < count; ++i) {
        if (std::memcmp(from + i * size, to + i * size, size) != 0)
            return "element " + std::to_string(i) + " differs";
    }
    return {};
}

std::string CompareLeaves(const AbstractProperty& original, const AbstractProperty& copy)
{
    const auto& from = static_cast<const SimpleProperty&>(original);
    const auto& to = static_cast<const SimpleProperty&>(copy);
    if (from.GetValueIsCellArray() != to.GetValueIsCellArray())
        return "the cell array flag differs";
    return CompareValues(from.GetValue(), to.GetValue());
}

std::string CompareReferences(const AbstractProperty& original, const AbstractProperty& copy)
{
    const auto& from = static_cast<const PropertyReference&>(original);
    const auto& to = static_cast<const PropertyReference&>(copy);
    std::string difference = DifferText("reference path", from.ReferencePath(), to.ReferencePath());
    if (difference.empty())
        difference = DifferText("reference file", from.ReferenceFilePath(), to.ReferenceFilePath());
    if (difference.empty())
        difference = DifferText("reference file type", from.ReferenceFileType(), to.ReferenceFileType());
    return difference;
}

std::string CompareNodes(const AbstractProperty& original, const AbstractProperty& copy)
{
    constexpr unsigned int kinds =
        PropertyTypeFlagObject | PropertyTypeFlagReference | PropertyTypeFlagSimple;
    std::string difference = Differ("kind", original.GetTypeFlags() & kinds, copy.GetTypeFlags() & kinds);
    if (difference.empty())
        difference = DifferText("type name", original.PropertyObjType(), copy.PropertyObjType());
    if (difference.empty())
        difference = Differ("flags", original.GetPropertyFlags(), copy.GetPropertyFlags());
    if (!difference.empty())
        return difference;
    if (original.IsSimpleProperty())
        return CompareLeaves(original, copy);
    if (original.IsPropertyReference())
        return CompareReferences(original, copy);
    return CompareTrees(static_cast<const PropertyObject&>(original),
                        static_cast<const PropertyObject&>(copy));
}

QList<AbstractProperty*> SavedChildren(const PropertyObject& folder)
{
    QList<AbstractProperty*> children;
    folder.GetPropertyList(&children);
    QList<AbstractProperty*> saved;
    for (AbstractProperty* const child : qAsConst(children)) {
        if (child->IsSerializable())
            saved.append(child);
    }
    return saved;
}

} // namespace

std::string CompareValues(const BVariant& original, const BVariant& copy)
{
    std::string difference = Differ("null", original.isNull(), copy.isNull());
    if (!difference.empty() || original.isNull())
        return difference;
    difference = Differ("element type", original.getWellKnownType().code(), copy.getWellKnownType().code());
    if (difference.empty())
        difference = Differ("shape", Shape(original), Shape(copy));
    return difference.empty() ? CompareElements(original, copy) : difference;
}

std::string CompareTrees(const PropertyObject& original, const PropertyObject& copy)
{
    const QList<AbstractProperty*> from = SavedChildren(original);
    QList<AbstractProperty*> to;
    copy.GetPropertyList(&to);
    for (int i = 0; i < from.size() && i < to.size(); ++i) {
        if (from[i]->GetName() != to[i]->GetName())
            return DifferText("child name", from[i]->GetName(), to[i]->GetName());
        const std::string difference = CompareNodes(*from[i], *to[i]);
        if (!difference.empty())
            return "/" + from[i]->GetName().toStdString() + (difference[0] == '/' ? "" : ": ") + difference;
    }
    return Differ("number of children", from.size(), to.size());
}

} // namespace Orrery::StorageTest
