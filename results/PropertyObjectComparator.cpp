#include "results/PropertyObjectComparator.h"

#include "foundations/property/PropertyObject.h"
#include "foundations/property/SimpleProperty.h"
#include "foundations/variant/VariantOperations.h"
#include "variables/Variable.h"

#include <typeinfo>

namespace Orrery {
namespace {

bool haveOneClass(const AbstractProperty& first, const AbstractProperty& second)
{
    return typeid(first) == typeid(second);
}

BVariant dataOf(const Variable& variable)
{
    const auto strategy = variable.GetStrategyPtr().lock();
    return strategy ? strategy->GetData(nullptr) : BVariant();
}

/// Two that aren't both values have the same one.
bool haveOneValue(const AbstractProperty& first, const AbstractProperty& second)
{
    if (!first.IsSimpleProperty() || !second.IsSimpleProperty())
        return true;
    const auto* left = dynamic_cast<const SimpleProperty*>(&first);
    const auto* right = dynamic_cast<const SimpleProperty*>(&second);
    return !left || !right ||
           Brindle::Quay::equalWithConversion(left->GetValueRef(), right->GetValueRef(), 1);
}

/// The children of `first` are all in `second`, as far as one can tell without going down.
bool haveLikeChildren(const QList<AbstractProperty*>& children, const PropertyObject& second)
{
    for (const AbstractProperty* child : children) {
        const AbstractProperty* other = second.GetPropertyConstPtr(child->GetName());
        if (!other || !haveOneClass(*child, *other) || !haveOneValue(*child, *other))
            return false;
    }
    return true;
}

} // namespace

PropertyObjectComparator::PropertyObjectComparator(const PropertyObject& first, const PropertyObject& second)
    : m_first(first)
    , m_second(second)
{
}

int PropertyObjectComparator::sameNames()
{
    return m_first.GetName() == m_second.GetName() ? 1 : 0;
}

int PropertyObjectComparator::sameTypes()
{
    return haveOneClass(m_first, m_second) ? 1 : 0;
}

int PropertyObjectComparator::sameValues()
{
    if (!m_first.IsVariable() || !m_second.IsVariable())
        return 1;
    const auto* first = dynamic_cast<const Variable*>(&m_first);
    const auto* second = dynamic_cast<const Variable*>(&m_second);
    if (!first || !second)
        return 1;
    return Brindle::Quay::equalWithConversion(dataOf(*first), dataOf(*second), 1) ? 1 : 0;
}

// All children of a folder are compared before anything below them: what differs near the top is found first.
int PropertyObjectComparator::sameFields()
{
    if (!sameNames() || !sameTypes())
        return 0;
    const QList<AbstractProperty*> children = m_first.GetPropertyListSorted();
    if (!haveLikeChildren(children, m_second))
        return 0;
    for (const AbstractProperty* child : children) {
        const auto* first = dynamic_cast<const PropertyObject*>(child);
        const auto* second =
            first ? dynamic_cast<const PropertyObject*>(m_second.GetPropertyConstPtr(child->GetName()))
                  : nullptr;
        if (second && !PropertyObjectComparator(*first, *second).sameFields())
            return 0;
    }
    return 1;
}

int PropertyObjectComparator::sameEverything()
{
    return sameValues() && sameFields() ? 1 : 0;
}

bool operator==(const PropertyObject& left, const PropertyObject& right)
{
    return PropertyObjectComparator(left, right).sameEverything() != 0;
}

bool operator!=(const PropertyObject& left, const PropertyObject& right)
{
    return !(left == right);
}

} // namespace Orrery
