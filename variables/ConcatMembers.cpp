#include "variables/ConcatMembers_p.h"

#include "variables/Variable.h"

namespace Orrery {

ERESULT addMember(PropertyObject& owner, const Variable* variable)
{
    QString name;
    const ERESULT code = owner.nextNumberedChildName(&name);
    return code < 0 ? code : owner.SetPropertyRef(name, variable);
}

} // namespace Orrery
