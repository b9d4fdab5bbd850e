#pragma once

#include "orrerycorevariables_export.h"
#include "tracking/DirtyTracker.h"
#include "variables/Variable.h"

#include <QObject>

#include <memory>
#include <mutex>

namespace Orrery {

struct DataObserver;

/// Tells the world outside that a Variable has changed, is going away, or has a new name or place.
///
/// Every Variable has one. Clients connect to the signals by the means of Qt, or derive from ISlotNotifyable.
/// The slots emit the signals through a guard: while a handler of one signal runs, a slot that is called from
/// within does nothing, so that clients which answer a change with a change come to an end.
///
/// Threads: a signal runs its handlers where the type of each connection says. Of two threads that call a slot
///          at once both may emit, or only one.
class ORRERYCOREVARIABLES_EXPORT Variable::Notifier : public QObject
{
    Q_OBJECT

public:
    /// Used as a guard of the slots, not as a node of a graph.
    using Tracker = DirtyTracker<Variable::Notifier, Variable::Notifier*>;

    Notifier();
    ~Notifier() override;

    /// The guard of the slots. It counts the emissions in its update count.
    const std::shared_ptr<Tracker>& getDirtyTracker() const { return m_dirtyTracker; }

    /// The observer that follows the Variable for references; empty until it is set.
    void setObserver(std::shared_ptr<DataObserver> observer);
    std::shared_ptr<DataObserver> getObserver() const; ///< shares its ownership

    // To call a signal emits it past the guard.
Q_SIGNALS:
    void Modified(); ///< the data have changed
    void Removed();  ///< the Variable is being destroyed; a Variable of a subclass says so twice
    void Renamed();  ///< the Variable has a new name or place

public Q_SLOTS:
    /// Emit Modified.
    ///
    /// Errors: an exception out of a handler passes through, and leaves this object silent from then on.
    /// Edge:   a handler may destroy the Variable.
    void Modify();

    /// Emit Removed, likewise.
    void Remove();

    /// Emit Renamed, likewise: a change of place has no signal of its own.
    void PathChanged();

private:
    using Signal = void (Notifier::*)();

    void EmitGuarded(Signal signal);

    std::shared_ptr<Tracker> m_dirtyTracker;
    std::shared_ptr<DataObserver> m_observer;
    [[maybe_unused]] std::mutex m_mutex;
};

} // namespace Orrery
