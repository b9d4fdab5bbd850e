#pragma once

#include "orrerycorevariables_export.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <utility>

namespace Orrery {

/// A node of the graph that says which computed data are out of date.
///
/// An edge runs from a source to its observers. When a source goes dirty, the mark runs down the graph at once;
/// what is computed from it is computed again when somebody asks for it. Nodes hold each other weakly: the graph
/// keeps no object alive, and a node that goes away tells nobody. The entries that it leaves behind in its
/// neighbours are passed over, and erased by resetStateFromSourceStates() or Nodes::remove() only.
///
/// A node is held by std::shared_ptr. A new one is clean and has no edges.
///
/// Threads: state and update count are atomic; of two threads that start an update of one node, one wins. The
///          edges have no lock: whoever changes edges keeps marks on other threads away from them.
struct ORRERYCOREVARIABLES_EXPORT AbstractDirtyTracker
{
    /// One side of the edges of a node: a set of weak pointers, ordered by owner.
    struct ORRERYCOREVARIABLES_EXPORT Nodes
    {
        /// Weak pointers, ordered by owner, so that an expired one keeps its place.
        using WeakSet = std::set<std::weak_ptr<AbstractDirtyTracker>,
                                 std::owner_less<std::weak_ptr<AbstractDirtyTracker>>>;

        /// The nodes that are still alive, ordered by pointer value. Expired entries stay in this set.
        std::set<std::shared_ptr<AbstractDirtyTracker>> operator()() const;

        /// Insert the entry of this node.
        ///
        /// Edge: a node that is present, or null, changes nothing.
        void add(std::shared_ptr<AbstractDirtyTracker> node);

        /// Erase the entry of this node.
        ///
        /// Edge: a node that is absent, or null, changes nothing.
        void remove(std::shared_ptr<AbstractDirtyTracker> node);

        void clear(); ///< erase all entries of this side only

        /// A copy of all entries, expired ones included.
        WeakSet nodes() const;

    private:
        friend struct AbstractDirtyTracker;

        WeakSet m_nodes;
    };

    AbstractDirtyTracker() = default; ///< clean, without edges
    AbstractDirtyTracker(const AbstractDirtyTracker&) = delete;
    AbstractDirtyTracker& operator=(const AbstractDirtyTracker&) = delete;

    /// Frees the edges of this node and tells no one.
    ///
    /// Cost: of any chain, one node: no destruction leads to another.
    virtual ~AbstractDirtyTracker();

    bool isClean() const { return getDirtyState() == s_clean; }       ///< nothing is to be done
    bool isDirty() const { return getDirtyState() == s_dirty; }       ///< to be computed at the next read
    bool isUpdating() const { return getDirtyState() == s_updating; } ///< being computed just now

    /// 0 clean, 1 updating, -1 dirty.
    int getDirtyState() const { return static_cast<std::int32_t>(m_condition.load() & s_stateBits); }

    /// How many times this node went from dirty to updating. Nothing resets it.
    int getUpdateCount() const { return static_cast<std::int32_t>(m_condition.load() >> 32); }

    /// The nodes that depend on this one.
    Nodes getObservers() const { return m_observers; }

    /// The nodes on which this one depends.
    Nodes getSources() const { return m_sources; }

    /// Become clean if all living sources are clean; else become dirty, with all below.
    ///
    /// Edge: expired sources are erased. A source that is updating isn't clean. Without a source that lives the
    ///       node comes out clean, even if it was dirty.
    /// Cost: as a mark when the node becomes dirty.
    void resetStateFromSourceStates();

    /// Make the edge from `source` to `observer`. A dirty source marks the observer, even one that is dirty
    /// already; a clean or updating one leaves it as it is.
    ///
    /// Edge: an edge that is there stays one edge. If either is null nothing happens.
    static void bind(std::shared_ptr<AbstractDirtyTracker> source,
                     std::shared_ptr<AbstractDirtyTracker> observer);

    /// Remove the edge from `source` to `observer`. No state changes.
    ///
    /// Edge: as bind().
    static void drop(std::shared_ptr<AbstractDirtyTracker> source,
                     std::shared_ptr<AbstractDirtyTracker> observer);

protected:
    /// Become clean, whatever the state was. Nobody else is told.
    void setClean() { m_condition &= ~s_stateBits; }

    /// Become dirty, whatever the state was, and mark the observers that aren't dirty yet, depth first, each
    /// with its own. An observer that is updating becomes dirty too.
    ///
    /// Edge: a node that is dirty already isn't followed, which also ends the walk in a cycle.
    /// Cost: linear in the edges that leave the marked nodes. The walk needs no call stack, and memory only for
    ///       nodes with further edges to follow: none for a chain or a fan of any size.
    void setDirty();

    /// Go from dirty to updating and count it. Returns whether that happened.
    ///
    /// Edge: a clean or updating node is left as it is.
    bool setUpdating();

    /// Mark this node and go on to updating. Returns whether it is updating because of this call.
    ///
    /// What markDirty() and setUpdating() do one after the other; in one step for a clean node on which nothing
    /// depends, where nobody could tell the difference.
    /// Edge: a node that is updating is left as it is.
    bool markAndSetUpdating();

    /// Add to the observers of this node only, not to the sources of the other.
    void addObserver(std::shared_ptr<AbstractDirtyTracker> observer);

    /// Add to the sources of this node only, not to the observers of the other.
    void addSource(std::shared_ptr<AbstractDirtyTracker> source);

private:
    static constexpr std::int32_t s_clean = 0;
    static constexpr std::int32_t s_updating = 1;
    static constexpr std::int32_t s_dirty = -1;
    static constexpr std::uint64_t s_stateBits = 0xffffffff;

    bool goToUpdatingFrom(std::int32_t state);
    bool allLivingSourcesAreClean();
    void markObservers();

    Nodes m_observers;
    Nodes m_sources;
    // Two signed 32-bit numbers in one word, so that an update is counted in the step that starts it: the state
    // in the lower half, the update count in the upper one. To set all bits of the state makes it dirty, to
    // clear them makes it clean.
    std::atomic<std::uint64_t> m_condition{0};
};

/// The tracker of an owner of class T, which alone may set its state directly.
///
/// Lives as long as somebody holds it, also past its owner; nothing follows the pointer to the owner.
template <class T, class P>
class ORRERYCOREVARIABLES_EXPORT DirtyTracker : public AbstractDirtyTracker
{
public:
    /// `owner` is a back reference and not owned.
    explicit DirtyTracker(P owner)
        : m_owner(owner)
    {
    }

    /// Mark this node and all below, unless it is updating. Returns whether it did.
    bool markDirty()
    {
        if (isUpdating())
            return false;
        setDirty();
        return true;
    }

    /// Run `update` if the node is dirty, with the state updating; the node is clean afterwards, whatever
    /// happened to it meanwhile, as the update has just read the present sources. Returns whether it ran.
    ///
    /// Errors: what `update` throws passes through, and the node stays updating; std::bad_function_call if it
    ///         is empty, likewise.
    /// Threads: of several threads that find the node dirty, one runs its function.
    bool updateIfDirty(std::function<void()> update) // NOLINT(performance-unnecessary-value-param)
    {
        if (!isDirty() || !setUpdating()) // the plain load first: most reads find the node clean
            return false;
        update();
        setClean();
        return true;
    }

private:
    friend T;

    [[maybe_unused]] P m_owner;
};

} // namespace Orrery
