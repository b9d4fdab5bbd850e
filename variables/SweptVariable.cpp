#include "variables/SweptVariable.h"

#include <memory>

namespace Orrery {

SweptVariable::SweptVariable()
{
    Init();
}

SweptVariable::SweptVariable(const QString& name)
    : Variable(name)
{
    Init();
}

// The assignment brings what the base class would copy.
SweptVariable::SweptVariable(const SweptVariable& other) // NOLINT(bugprone-copy-constructor-init)
    : Variable()                                         // the assignment brings the rest
{
    operator=(other);
}

// The base class knows the way back from an assignment to itself.
// NOLINTNEXTLINE(bugprone-unhandled-self-assignment)
SweptVariable& SweptVariable::operator=(const SweptVariable& other)
{
    Variable::operator=(other);
    return *this;
}

SweptVariable::~SweptVariable()
{
    announceRemoval();
}

const QString& SweptVariable::StaticType()
{
    static const QString type = QStringLiteral("SweptVariable");
    return type;
}

const QString& SweptVariable::PropertyObjType() const
{
    return StaticType();
}

AbstractProperty* SweptVariable::DoClone() const
{
    auto copy = std::make_unique<SweptVariable>();
    *copy = *this;
    return copy.release();
}

void SweptVariable::Init()
{
    SetStrategy<SweptVarStrategy>();
}

ERESULT SweptVariable::SetParameter(const Variable* variable)
{
    const std::shared_ptr<Variable> owner = strategyOwner();
    return owner ? owner->SetPropertyRef(SweptVarStrategy::sParam(), variable) : ER_FAILED;
}

ERESULT SweptVariable::SetConcatVar(const Variable* variable)
{
    const std::shared_ptr<Variable> owner = strategyOwner();
    return owner ? owner->SetPropertyRef(SweptVarStrategy::sConcatData(), variable) : ER_FAILED;
}

} // namespace Orrery
