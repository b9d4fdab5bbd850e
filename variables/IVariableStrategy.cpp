#include "variables/IVariableStrategy.h"

#include "tracking/Notifier.h"
#include "variables/DataProperty_p.h"
#include "variables/Variable.h"

#include <stdexcept>

namespace Orrery {

IVariableStrategy::IVariableStrategy(Variable* owner)
    : m_backRef(owner)
{
    if (!owner)
        throw std::invalid_argument("A variable strategy needs an owner.");
}

IVariableStrategy::~IVariableStrategy() = default;

BVariant IVariableStrategy::GetData(IsCellArray* flag) const
{
    if (flag)
        *flag = IsCellArrayFalse;
    // To count the offsets may compute, and call handlers of the host that destroy the owner.
    const PropertyHandle owner(m_backRef);
    const std::uint64_t end = GetMaxIndepOffset();
    BVariant data;
    if (owner.IsExpired() || GetValueRange(&data, 0, end) < 0)
        return BVariant();
    return data;
}

Variable& IVariableStrategy::UpdateData(const BVariant& /*data*/, IsCellArray /*flag*/)
{
    return *m_backRef;
}

std::shared_ptr<AbstractDirtyTracker> IVariableStrategy::getDirtyTracker() const
{
    return m_backRef->getDirtyTracker();
}

void IVariableStrategy::push(const BVariant& data, IsCellArray flag)
{
    // Tried, not awaited: a computation may hold the mutex for long, and its result would overwrite these data.
    const std::unique_lock<std::recursive_mutex> lock(m_mutex, std::try_to_lock);
    if (!lock)
        return;
    SimpleProperty* property = ensureDataProperty(*m_backRef);
    if (!property)
        return;
    property->SetValue(data, flag);
    if (const Variable::Notifier* notifier = m_backRef->getNotifier())
        notifier->getDirtyTracker()->markDirty();
}

} // namespace Orrery
