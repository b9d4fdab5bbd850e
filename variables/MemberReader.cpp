#include "variables/MemberReader_p.h"

#include "foundations/property/SimpleProperty.h"
#include "variables/ConcatVar.h"
#include "variables/ExplicitDataVar.h"
#include "variables/OffsetCountRun_p.h"
#include "variables/RangeVar.h"
#include "variables/SweptVariable.h"

#include <memory>
#include <typeinfo>

namespace Orrery {
namespace {

template <class Class, class T>
bool isExactly(const T& object)
{
    return typeid(object) == typeid(Class);
}

} // namespace

MemberReader::MemberReader(const Variable& variable)
    : m_variable(&variable)
{
    if (!isExactly<ExplicitDataVar>(variable) && !isExactly<Variable>(variable) &&
        !isExactly<RangeVar>(variable))
        return;
    m_plain = variable.plainStrategy();
    if (!m_plain || !isExactly<ExplicitDataVarStrategy>(*m_plain))
        return;
    // What else stands there is destroyed when it is read, by which it may run code of a host.
    const AbstractProperty* const data = variable.GetPropertyConstPtr(ExplicitDataVar::getDataPropName());
    if (data && isExactly<SimpleProperty>(*data))
        m_data = static_cast<const SimpleProperty*>(data);
    else
        m_plain = nullptr;
}

void MemberReader::prefetch([[maybe_unused]] const AbstractProperty& node)
{
#if defined(__GNUC__)
    if (!isExactly<ExplicitDataVar>(node) && !isExactly<Variable>(node))
        return;
    const auto& variable = static_cast<const Variable&>(node);
    __builtin_prefetch(variable.m_strategy.get());
    __builtin_prefetch(variable.m_dirtyTracker.get());
#endif
}

std::uint64_t MemberReader::GetMaxIndepOffset()
{
    m_vector = findVector();
    if (m_vector)
        return m_vector->getDimensions()[0];
    if (m_plain)
        return m_plain->GetMaxIndepOffset();
    if (asksMembersOnly())
        return m_variable->GetMaxIndepOffset();
    const OffsetCountRun::Pause pause;
    return m_variable->GetMaxIndepOffset();
}

/// Whether no code but that of this library runs until a member is asked for its offsets.
bool MemberReader::asksMembersOnly() const
{
    const Variable& variable = *m_variable;
    if (!isExactly<ConcatVar>(variable) && !isExactly<SweptVariable>(variable) &&
        !isExactly<Variable>(variable))
        return false;
    const std::shared_ptr<IVariableStrategy> strategy = variable.strategyInUse();
    return strategy && (isExactly<ConcatVarStrategy>(*strategy) || isExactly<SweptVarStrategy>(*strategy)) &&
           variable.strategyOwner().get() == &variable;
}

ERESULT MemberReader::GetValueAt(BVariant* out, std::uint64_t offset) const
{
    return m_plain ? m_plain->GetValueAt(out, offset) : m_variable->GetValueAt(out, offset);
}

ERESULT MemberReader::GetValueRange(BVariant* out, std::uint64_t start, std::uint64_t end) const
{
    return m_plain ? m_plain->GetValueRange(out, start, end) : m_variable->GetValueRange(out, start, end);
}

/// Only of a Variable that is up to date; else the strategy has to make it so.
const BVariant* MemberReader::findVector() const
{
    if (!m_data || !m_variable->getDirtyTracker()->isClean())
        return nullptr;
    const BVariant& value = m_data->GetValueRef();
    return value.getDimensions().size() == 1 ? &value : nullptr;
}

} // namespace Orrery
