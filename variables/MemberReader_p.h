#pragma once

#include "foundations/property/ErrorResult.h"
#include "foundations/variant/BVariant.h"

#include <cstdint>

namespace Orrery {

using Brindle::Quay::BVariant;

class AbstractProperty;
class IVariableStrategy;
class SimpleProperty;
class Variable;

/// Reads one of many variables, as its virtual operations do.
///
/// A host may override these. Most variables are of this library, though, and only return what they store;
/// those are read past them, without holding what can't change meanwhile: for few elements that would take
/// most of the time.
class MemberReader
{
public:
    MemberReader() = default;

    /// The Variable isn't owned, and must live as long as it is read.
    explicit MemberReader(const Variable& variable);

    /// Fetch into the cache what a read of the Variable begins with; nothing for any other node.
    static void prefetch(const AbstractProperty& node);

    /// Whether reading runs nothing but code of this library, so that the tree stays as it is.
    bool isPlain() const { return m_plain != nullptr; }

    std::uint64_t GetMaxIndepOffset();
    ERESULT GetValueAt(BVariant* out, std::uint64_t offset) const;
    ERESULT GetValueRange(BVariant* out, std::uint64_t start, std::uint64_t end) const;

    /// A vector that is the whole data, where it is stored, for reading without a copy; null if it is none or
    /// isn't stored. To be asked for after GetMaxIndepOffset(); valid until anything is read.
    const BVariant* storedVector() const { return m_vector; }

private:
    const BVariant* findVector() const;
    bool asksMembersOnly() const;

    const Variable* m_variable = nullptr;
    const IVariableStrategy* m_plain =
        nullptr;                            // null for a Variable whose virtual operations are to be asked
    const SimpleProperty* m_data = nullptr; // where a plain one stores its elements; null if it doesn't
    const BVariant* m_vector = nullptr;
};

} // namespace Orrery
