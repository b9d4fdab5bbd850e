#include "tracking/DirtyTracker.h"

#include <vector>

namespace Orrery {
namespace {

/// A node on the way of a mark, with the edges that are still to be followed.
struct Frame
{
    std::shared_ptr<AbstractDirtyTracker>
        node; // keeps the edges alive; the start of the walk needs nobody to
    AbstractDirtyTracker::Nodes::WeakSet::const_iterator next;
    AbstractDirtyTracker::Nodes::WeakSet::const_iterator end;
};

} // namespace

std::set<std::shared_ptr<AbstractDirtyTracker>> AbstractDirtyTracker::Nodes::operator()() const
{
    std::set<std::shared_ptr<AbstractDirtyTracker>> alive;
    for (const auto& entry : m_nodes) {
        if (auto node = entry.lock())
            alive.insert(std::move(node));
    }
    return alive;
}

// NOLINTBEGIN(performance-unnecessary-value-param): a node stays alive through the whole of a change of edges
void AbstractDirtyTracker::Nodes::add(std::shared_ptr<AbstractDirtyTracker> node)
{
    if (node)
        m_nodes.insert(node);
}

void AbstractDirtyTracker::Nodes::remove(std::shared_ptr<AbstractDirtyTracker> node)
{
    if (node)
        m_nodes.erase(node);
}

// NOLINTEND(performance-unnecessary-value-param)

void AbstractDirtyTracker::Nodes::clear()
{
    m_nodes.clear();
}

AbstractDirtyTracker::Nodes::WeakSet AbstractDirtyTracker::Nodes::nodes() const
{
    return m_nodes;
}

AbstractDirtyTracker::~AbstractDirtyTracker() = default;

void AbstractDirtyTracker::resetStateFromSourceStates()
{
    if (allLivingSourcesAreClean())
        setClean();
    else
        setDirty();
}

bool AbstractDirtyTracker::allLivingSourcesAreClean()
{
    auto& sources = m_sources.m_nodes;
    std::size_t cleanCount = 0;
    for (auto entry = sources.begin(); entry != sources.end();) {
        const auto source = entry->lock();
        if (!source) {
            entry = sources.erase(entry);
            continue;
        }
        if (source->isClean())
            ++cleanCount;
        ++entry;
    }
    return cleanCount == sources.size();
}

// NOLINTBEGIN(performance-unnecessary-value-param): as above
void AbstractDirtyTracker::bind(std::shared_ptr<AbstractDirtyTracker> source,
                                std::shared_ptr<AbstractDirtyTracker> observer)
{
    if (!source || !observer)
        return;
    source->addObserver(observer);
    observer->addSource(source);
    if (source->isDirty())
        observer->setDirty();
}

void AbstractDirtyTracker::drop(std::shared_ptr<AbstractDirtyTracker> source,
                                std::shared_ptr<AbstractDirtyTracker> observer)
{
    if (!source || !observer)
        return;
    source->m_observers.remove(observer);
    observer->m_sources.remove(source);
}

// NOLINTEND(performance-unnecessary-value-param)

void AbstractDirtyTracker::setDirty()
{
    m_condition |= s_stateBits;
    markObservers();
}

void AbstractDirtyTracker::markObservers()
{
    // The order is that of a recursion. A node whose last edge is being followed isn't kept, so that a chain
    // needs no memory; pushing all observers at once instead would visit the shared ones of a lattice again
    // and again.
    std::vector<Frame> unfinished;
    Frame current{nullptr, m_observers.m_nodes.begin(), m_observers.m_nodes.end()};
    for (;;) {
        if (current.next == current.end) {
            if (unfinished.empty())
                return;
            current = std::move(unfinished.back());
            unfinished.pop_back();
            continue;
        }
        auto observer = (current.next++)->lock();
        if (!observer || observer->isDirty())
            continue;
        const auto& edges = observer->m_observers.m_nodes;
        observer->m_condition |= s_stateBits;
        if (edges.empty())
            continue;
        if (current.next != current.end)
            unfinished.push_back(std::exchange(current, Frame()));
        current.node.swap(observer);
        current.next = edges.begin();
        current.end = edges.end();
    }
}

bool AbstractDirtyTracker::setUpdating()
{
    return goToUpdatingFrom(s_dirty);
}

bool AbstractDirtyTracker::markAndSetUpdating()
{
    if (m_observers.m_nodes.empty() && goToUpdatingFrom(s_clean))
        return true;
    if (isUpdating())
        return false;
    setDirty();
    return setUpdating();
}

bool AbstractDirtyTracker::goToUpdatingFrom(std::int32_t state)
{
    std::uint64_t present = m_condition;
    while (static_cast<std::int32_t>(present & s_stateBits) == state) {
        const std::uint64_t counted = (present & ~s_stateBits) + (std::uint64_t{1} << 32);
        if (m_condition.compare_exchange_weak(present, counted | s_updating))
            return true;
    }
    return false;
}

void AbstractDirtyTracker::addObserver(std::shared_ptr<AbstractDirtyTracker> observer)
{
    m_observers.add(std::move(observer));
}

void AbstractDirtyTracker::addSource(std::shared_ptr<AbstractDirtyTracker> source)
{
    m_sources.add(std::move(source));
}

} // namespace Orrery
