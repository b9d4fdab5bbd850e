#include "variables/RangeVar.h"

#include "variables/RangeParameters_p.h"

#include <memory>

namespace Orrery {

RangeVar::RangeVar()
{
    Init();
}

RangeVar::RangeVar(const QString& name)
    : Variable(name)
{
    Init();
}

RangeVar::RangeVar(const RangeVar& other)
    : Variable(other)
{
    operator=(other);
}

// The base class knows the way back from an assignment to itself.
// NOLINTNEXTLINE(bugprone-unhandled-self-assignment)
RangeVar& RangeVar::operator=(const RangeVar& other)
{
    Variable::operator=(other);
    return *this;
}

RangeVar::~RangeVar()
{
    announceRemoval();
}

const QString& RangeVar::StaticType()
{
    static const QString type = QStringLiteral("RangeVar");
    return type;
}

const QString& RangeVar::PropertyObjType() const
{
    return StaticType();
}

AbstractProperty* RangeVar::DoClone() const
{
    auto copy = std::make_unique<RangeVar>();
    *copy = *this;
    return copy.release();
}

void RangeVar::Init()
{
    SetStrategy<RangeVarStrategy>();
}

ERESULT RangeVar::SetStart(const BVariant& value)
{
    const std::shared_ptr<Variable> owner = strategyOwner();
    return owner ? setRangeParameter(*owner, Start, value) : ER_FAILED;
}

ERESULT RangeVar::SetStep(const BVariant& value)
{
    const std::shared_ptr<Variable> owner = strategyOwner();
    return owner ? setRangeParameter(*owner, Step, value) : ER_FAILED;
}

ERESULT RangeVar::SetCount(const BVariant& value)
{
    const std::shared_ptr<Variable> owner = strategyOwner();
    return owner ? setRangeParameter(*owner, Count, value) : ER_FAILED;
}

ERESULT RangeVar::GetParams(double* start, double* step, std::uint64_t* count) const
{
    if (const std::shared_ptr<IVariableStrategy> present = strategyInUse())
        verifyBackref(*present);
    // Asked for again: what a copy onto a moved-from Variable calls may have exchanged it.
    const auto strategy = std::dynamic_pointer_cast<RangeVarStrategy>(strategyInUse());
    return strategy ? strategy->GetParams(start, step, count) : ER_FAILED;
}

} // namespace Orrery
