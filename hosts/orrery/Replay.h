#pragma once

#include "foundations/property/PropertyObject.h"
#include "foundations/variant/BVariant.h"
#include "hosts/orrery/EventLoop.h"
#include "variables/Variable.h"

#include <QObject>
#include <QString>

#include <cstdint>
#include <memory>

namespace Orrery::Host {

/// Lets a variable grow in an event loop as a simulator would: some points at a time, one step in a turn of the
/// loop. In the end the variable is put into a folder, which gives it a new place, and then destroyed; after that
/// the loop is told to quit.
///
/// Each turn queues the next one before it does its work. So a queued signal of a step arrives when the next step
/// has been taken, as with a simulator that waits for nobody.
/// Errors: go to the event loop.
/// Cost:   each step copies all points so far, so many small steps through many points are slow.
class Replay
{
public:
    /// `name` is the variable's and `folder` that of its place in the end. `data` are all the points, along the
    /// first dimension; `step` is how many of them a turn adds, 1 or more. The loop isn't owned and must outlive
    /// the replay.
    Replay(EventLoop& loop, const QString& name, const QString& folder, Brindle::Quay::BVariant data,
           std::uint64_t step);

    /// The variable before the loop runs; without data.
    const Variable& variable() const { return *m_variable; }

    /// Queue the first step.
    void start();

private:
    void queue(void (Replay::*turn)());
    void grow();
    void place();
    void remove();

    EventLoop& m_loop;
    Brindle::Quay::BVariant m_data;
    std::uint64_t m_step;
    std::uint64_t m_points;
    std::uint64_t m_done = 0;
    QString m_folder;
    std::unique_ptr<PropertyObject> m_root;
    std::unique_ptr<Variable> m_variable; // until it lies in the tree
    QObject m_context;                    // of the queued turns, which end with it
};

} // namespace Orrery::Host
