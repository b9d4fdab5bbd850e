#include "tracking/SlotNotifyable.h"

#include "tracking/Notifier.h"

namespace Orrery {

void ISlotNotifyable::ConnectTo(const Variable& variable, Qt::ConnectionType type)
{
    const Variable::Notifier* notifier = variable.getNotifier();
    if (!notifier)
        return;
    // By signature: the slots of a client that has no meta-object of its own are found all the same.
    connect(notifier, SIGNAL(Modified()), this, SLOT(Update()), type);
    connect(notifier, SIGNAL(Removed()), this, SLOT(Removed()), type);
    connect(notifier, SIGNAL(Renamed()), this, SLOT(Renamed()), type);
}

void ISlotNotifyable::DisconnectFrom(const Variable& variable)
{
    if (const Variable::Notifier* notifier = variable.getNotifier())
        disconnect(notifier, nullptr, this, nullptr);
}

ISlotNotifyable& ISlotNotifyable::Removed()
{
    return *this;
}

ISlotNotifyable& ISlotNotifyable::Renamed()
{
    return *this;
}

} // namespace Orrery
