#include "variables/SweptVarStrategy.h"

#include "variables/Variable.h"

namespace Orrery {

SweptVarStrategy::SweptVarStrategy(Variable* owner)
    : IVariableStrategy(owner)
{
}

SweptVarStrategy::~SweptVarStrategy() = default;

const QString& SweptVarStrategy::StaticType()
{
    static const QString type = QStringLiteral("SweptStrategy");
    return type;
}

QString SweptVarStrategy::GetType() const
{
    return StaticType();
}

std::shared_ptr<IVariableStrategy> SweptVarStrategy::Copy(Variable* owner) const
{
    return std::make_shared<SweptVarStrategy>(owner);
}

ERESULT SweptVarStrategy::SetParameter(const Variable* variable)
{
    return backRef()->SetPropertyRef(sParam(), variable);
}

ERESULT SweptVarStrategy::SetConcatVar(const Variable* variable)
{
    return backRef()->SetPropertyRef(sConcatData(), variable);
}

const QString& SweptVarStrategy::sParam()
{
    return s_param;
}

const QString& SweptVarStrategy::sConcatData()
{
    return s_concatData;
}

ERESULT SweptVarStrategy::GetValueAt(BVariant* out, std::uint64_t /*offset*/) const
{
    return out ? ER_FAILED : ER_INVALID_ARGUMENT;
}

ERESULT SweptVarStrategy::GetValueRange(BVariant* out, std::uint64_t /*start*/, std::uint64_t /*end*/) const
{
    return out ? ER_FAILED : ER_INVALID_ARGUMENT;
}

std::uint64_t SweptVarStrategy::GetMaxIndepOffset() const
{
    return 0;
}

std::uint64_t SweptVarStrategy::GetElementDimCount() const
{
    return 0;
}

ERESULT SweptVarStrategy::GetElementShape(std::vector<std::uint64_t>* shape) const
{
    if (!shape)
        return ER_INVALID_ARGUMENT;
    shape->clear();
    return ER_SUCCESS;
}

} // namespace Orrery
