#include "tracking/Notifier.h"

#include "tracking/DataObserver.h"

#include <utility>

namespace Orrery {
namespace {

/// An emission that is under way on this thread. A handler may destroy the notifier; then the tracker, which has
/// to become clean in the end, is kept here. A shared pointer for every emission would cost as much as an
/// emission to one more receiver.
struct Emission;
thread_local Emission* s_innermost = nullptr;

struct Emission
{
    explicit Emission(AbstractDirtyTracker* tracked)
        : tracker(tracked)
        , outer(s_innermost)
    {
        s_innermost = this;
    }
    Emission(const Emission&) = delete;
    Emission& operator=(const Emission&) = delete;
    ~Emission() { s_innermost = outer; }

    const AbstractDirtyTracker* tracker;
    std::shared_ptr<AbstractDirtyTracker> orphan;
    Emission* outer;
};

} // namespace

Variable::Notifier::Notifier()
    : m_dirtyTracker(std::make_shared<Tracker>(this))
{
}

Variable::Notifier::~Notifier()
{
    for (Emission* emission = s_innermost; emission; emission = emission->outer) {
        if (emission->tracker == m_dirtyTracker.get())
            emission->orphan = m_dirtyTracker;
    }
}

void Variable::Notifier::setObserver(std::shared_ptr<DataObserver> observer)
{
    m_observer = std::move(observer);
}

std::shared_ptr<DataObserver> Variable::Notifier::getObserver() const
{
    return m_observer;
}

void Variable::Notifier::Modify()
{
    EmitGuarded(&Notifier::Modified);
}

void Variable::Notifier::Remove()
{
    EmitGuarded(&Notifier::Removed);
}

void Variable::Notifier::PathChanged()
{
    EmitGuarded(&Notifier::Renamed);
}

void Variable::Notifier::EmitGuarded(Signal signal)
{
    Tracker* tracker = m_dirtyTracker.get();
    if (!tracker->markAndSetUpdating())
        return;
    Emission emission(tracker);
    (this->*signal)();
    tracker->setClean();
}

} // namespace Orrery
