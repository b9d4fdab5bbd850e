#pragma once

#include "foundations/property/PropertyHandle.h"
#include "hosts/orrery/EventLoop.h"
#include "hosts/orrery/Output.h"
#include "tracking/SlotNotifyable.h"

#include <string>

namespace Orrery::Host {

/// Prints one line for each signal of a variable, at once: the signal's name, a tab, and what is seen when it
/// arrives. Control characters are shown as \n and the like.
///
///     update   name, number of offsets, and the newest value, or its elements in row-major order
///     renamed  the full path
///     removed  the last known name
///
/// Edge:   offsets lie along the first dimension. An update that arrives after the variable has gone prints
///         nothing.
/// Errors: go to the event loop.
class SignalPrinter : public ISlotNotifyable
{
public:
    /// Neither is owned; both must outlive the printer.
    SignalPrinter(EventLoop& loop, Output& out);

    /// Connect to `variable`; to one only.
    void follow(const Variable& variable, Qt::ConnectionType type);

    ISlotNotifyable& Update() override;
    ISlotNotifyable& Removed() override;
    ISlotNotifyable& Renamed() override;

private:
    void printUpdate();
    void printLine(const std::string& line);

    EventLoop& m_loop;
    Output& m_out;
    PropertyHandle m_variable; // a queued signal may outlive it
    std::string m_name;
};

} // namespace Orrery::Host
