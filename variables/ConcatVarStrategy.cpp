#include "variables/ConcatVarStrategy.h"

#include "variables/ConcatMembers_p.h"
#include "variables/Variable.h"

namespace Orrery {

ConcatVarStrategy::ConcatVarStrategy(Variable* owner)
    : IVariableStrategy(owner)
{
}

ConcatVarStrategy::~ConcatVarStrategy() = default;

const QString& ConcatVarStrategy::StaticType()
{
    static const QString type = QStringLiteral("ConcatStrategy");
    return type;
}

QString ConcatVarStrategy::GetType() const
{
    return StaticType();
}

std::shared_ptr<IVariableStrategy> ConcatVarStrategy::Copy(Variable* owner) const
{
    return std::make_shared<ConcatVarStrategy>(owner);
}

ERESULT ConcatVarStrategy::AddVariable(const Variable* variable)
{
    return addMember(*backRef(), variable);
}

ERESULT ConcatVarStrategy::GetValueAt(BVariant* out, std::uint64_t /*offset*/) const
{
    return out ? ER_FAILED : ER_INVALID_ARGUMENT;
}

ERESULT ConcatVarStrategy::GetValueRange(BVariant* out, std::uint64_t /*start*/, std::uint64_t /*end*/) const
{
    return out ? ER_FAILED : ER_INVALID_ARGUMENT;
}

std::uint64_t ConcatVarStrategy::GetMaxIndepOffset() const
{
    return 0;
}

std::uint64_t ConcatVarStrategy::GetElementDimCount() const
{
    return 0;
}

ERESULT ConcatVarStrategy::GetElementShape(std::vector<std::uint64_t>* shape) const
{
    if (!shape)
        return ER_INVALID_ARGUMENT;
    shape->clear();
    return ER_SUCCESS;
}

} // namespace Orrery
