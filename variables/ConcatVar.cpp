#include "variables/ConcatVar.h"

#include "variables/ConcatMembers_p.h"

#include <memory>

namespace Orrery {

ConcatVar::ConcatVar()
{
    Init();
}

ConcatVar::ConcatVar(const QString& name)
    : Variable(name)
{
    Init();
}

ConcatVar::ConcatVar(const ConcatVar& other)
    : Variable(other)
{
    operator=(other);
}

// The base class knows the way back from an assignment to itself.
// NOLINTNEXTLINE(bugprone-unhandled-self-assignment)
ConcatVar& ConcatVar::operator=(const ConcatVar& other)
{
    Variable::operator=(other);
    return *this;
}

ConcatVar::~ConcatVar()
{
    announceRemoval();
}

const QString& ConcatVar::StaticType()
{
    static const QString type = QStringLiteral("ConcatVar");
    return type;
}

const QString& ConcatVar::PropertyObjType() const
{
    return StaticType();
}

AbstractProperty* ConcatVar::DoClone() const
{
    auto copy = std::make_unique<ConcatVar>();
    *copy = *this;
    return copy.release();
}

void ConcatVar::Init()
{
    SetStrategy<ConcatVarStrategy>();
}

ERESULT ConcatVar::AddVariable(const Variable* variable)
{
    const std::shared_ptr<Variable> owner = strategyOwner();
    return owner ? addMember(*owner, variable) : ER_FAILED;
}

} // namespace Orrery
