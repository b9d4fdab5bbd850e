#include "variables/ExplicitDataVar.h"

#include <memory>

namespace Orrery {

template ORRERYCOREVARIABLES_EXPORT ExplicitDataVar*
PropertyObject::GetPtr<ExplicitDataVar>(const QString& name);

ExplicitDataVar::ExplicitDataVar()
{
    Init();
}

ExplicitDataVar::ExplicitDataVar(const QString& name)
    : Variable(name)
{
    Init();
}

ExplicitDataVar::ExplicitDataVar(const ExplicitDataVar& other)
    : Variable(other)
{
    // Every typed Variable assigns a second time, as itself: what its own operator= adds reaches the copy too.
    operator=(other);
}

// The base class knows the way back from an assignment to itself.
// NOLINTNEXTLINE(bugprone-unhandled-self-assignment)
ExplicitDataVar& ExplicitDataVar::operator=(const ExplicitDataVar& other)
{
    Variable::operator=(other);
    return *this;
}

ExplicitDataVar::~ExplicitDataVar()
{
    announceRemoval();
}

const QString& ExplicitDataVar::StaticType()
{
    static const QString type = QStringLiteral("ExplVar");
    return type;
}

const QString& ExplicitDataVar::PropertyObjType() const
{
    return StaticType();
}

const QString& ExplicitDataVar::getDataPropName()
{
    return s_data;
}

AbstractProperty* ExplicitDataVar::DoClone() const
{
    auto copy = std::make_unique<ExplicitDataVar>();
    *copy = *this;
    return copy.release();
}

void ExplicitDataVar::Init()
{
    SetProperty(getDataPropName(), BVariant());
    SetStrategy<ExplicitDataVarStrategy>();
}

} // namespace Orrery
