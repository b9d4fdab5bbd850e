#pragma once

#include "orrerycorevariables_export.h"

#include <QObject>

namespace Orrery {

class Variable;

/// Base class of a client that wants to hear of the changes of Variables.
///
///     class Plot : public ISlotNotifyable
///     {
///         ISlotNotifyable& Update() override { redraw(); return *this; }
///     };
///     plot.ConnectTo(variable, Qt::AutoConnection);
///
/// Connections end with the client and with the Variable. A derived class needs no Q_OBJECT: the slots go
/// through the virtual operations.
class ORRERYCOREVARIABLES_EXPORT ISlotNotifyable : public QObject
{
    Q_OBJECT

public:
    /// Let the signals Modified, Removed and Renamed of the Variable call the slots of this object.
    ///
    /// Edge:   a second call for one Variable makes every event arrive twice. A moved-from Variable has nothing
    ///         to connect to.
    /// Threads: with Qt::AutoConnection and Qt::QueuedConnection a slot runs on the thread of this object.
    void ConnectTo(const Variable& variable, Qt::ConnectionType type);

    /// End every connection from the Variable to this object; nothing happens if there is none.
    void DisconnectFrom(const Variable& variable);

public Q_SLOTS:
    // The result is for callers of a host; what a signal calls has none.

    /// The data of a Variable have changed.
    virtual ISlotNotifyable& Update() = 0;

    /// A Variable is being destroyed. One of a subclass announces that twice.
    virtual ISlotNotifyable& Removed();

    /// A Variable has a new name or place.
    virtual ISlotNotifyable& Renamed();
};

} // namespace Orrery
