#pragma once

#include "foundations/property/PropertyHandle.h"
#include "orrerycorevariables_export.h"
#include "tracking/DirtyTracker.h"

#include <QString>

#include <functional>
#include <memory>
#include <string>

namespace Orrery {

class Variable;

/// Follows one Variable object, by pointer, for references that could not be bound to it when they were made.
///
/// An observer is shared by the notifier of its Variable and by the references; it lives as long as one of them.
/// When the Variable is moved, the observer follows it to the new object. Its tracker observes the tracker of
/// the Variable.
///
/// The public fields are the host's: a look-up and a callback of its own, and two texts for them. Nothing in
/// this library fills in the texts or calls the functions.
///
/// Threads: no lock; one thread at a time, like the Variable.
struct ORRERYCOREVARIABLES_EXPORT DataObserver
{
    using Locator = std::function<Variable*(QString, QString)>; ///< finds a Variable for a host by two texts
    using Notifier = std::function<void(Variable*)>;            ///< tells a host of a Variable
    using Tracker = DirtyTracker<DataObserver, DataObserver*>;  ///< a node below the Variable's

    /// Observes nothing yet. The locator finds no Variable, the notifier does nothing.
    DataObserver();

    /// A copy shares the tracker and takes the rest as it is.
    DataObserver(const DataObserver& other);
    DataObserver& operator=(const DataObserver& other); ///< as the copy; the former tracker is let go of

    /// Leaves the tracker of the Variable alone: the entry there expires by itself.
    ~DataObserver();

    /// Observe this Variable instead of the present one; null for none. Returns this observer.
    ///
    /// The tracker leaves the former Variable's and is bound to the new one's: it is dirty at once if that is.
    /// Edge: the present Variable again changes nothing.
    DataObserver& setVariable(Variable* variable);
    DataObserver& setLocator(Locator function);   ///< for the host's use. Returns this observer
    DataObserver& setNotifier(Notifier function); ///< for the host's use. Returns this observer

    /// The Variable as it was set. Nothing clears it when the Variable is destroyed; see livingVariable().
    Variable* getVariable() const { return m_variable; }

    /// The Variable; null when there is none, when it was destroyed, and while its destruction is under way.
    Variable* livingVariable() const;

    QString getVariableName() const;                  ///< the host's text in variableName
    QString getVariablePath() const;                  ///< the host's text in variablePath
    Notifier getNotifier() const { return notifier; } ///< a copy of the host's callback
    const std::shared_ptr<Tracker>& getDirtyTracker() const { return m_dirtyTracker; } ///< never null

    Locator locator;   ///< the host's; never called here
    Notifier notifier; ///< the host's; never called here

private:
    std::shared_ptr<Tracker> m_dirtyTracker;

public:
    std::string variablePath; ///< UTF-8
    std::string variableName; ///< UTF-8

private:
    Variable* m_variable = nullptr; // not owned
    /// The tracker that is bound: it may outlive the variable, or be replaced in it.
    std::weak_ptr<AbstractDirtyTracker> m_source;
    PropertyHandle m_life; // of the same Variable
};

/// The observer of a Variable, which is made and given to the Variable if it has none.
///
/// Edge: empty for null and for a moved-from Variable.
ORRERYCOREVARIABLES_EXPORT std::shared_ptr<DataObserver> ensureObserver(Variable* variable);

} // namespace Orrery
