#pragma once

#include "foundations/property/PropertyHandle.h"
#include "foundations/property/PropertyObject.h"
#include "variables/MemberReader_p.h"

#include <QList>

#include <array>
#include <cstdint>
#include <vector>

namespace Orrery {

class Variable;

/// Refer to one more member of a concatenation under the next number of its folder.
///
/// Errors: those of PropertyObject::nextNumberedChildName and SetPropertyRef.
ERESULT addMember(PropertyObject& owner, const Variable* variable);

/// What a child is or refers to, as far as that can be told without code of a host; null for one that has to
/// be resolved.
const AbstractProperty* targetAtHand(const AbstractProperty& child);

/// The members of a concatenation in order, as its folder holds them when the walk begins.
///
/// A member may run code of a host when it is read, which may change the tree. A member that is destroyed
/// meanwhile doesn't resolve; one that is added isn't part of the walk.
/// Threads: one thread, like the tree.
class ConcatMembers
{
public:
    explicit ConcatMembers(const PropertyObject& owner);

    bool isEmpty() const { return m_children.isEmpty(); }
    std::uint64_t count() const { return static_cast<std::uint64_t>(m_children.size()); }

    /// Go on to the next member; false behind the last one.
    bool next();

    /// To be called before code of a host runs that has nothing to do with the members: it may destroy those
    /// to come. What the walk itself runs needs no such care.
    void hold();

    /// Go back by one member, so that next() comes to the present one again.
    void back() { --m_next; }

    /// Whether resolve() runs no code of a host. False once there may have been such code.
    bool isAtHand() const { return atHand() != nullptr; }

    /// Resolve the present member: the child itself, or what the child refers to. False if it doesn't
    /// resolve: it is neither, or no Variable, or being read on this thread already.
    bool resolve();

    /// Once more, after a read: whether the present member is still there. It may be another Variable then.
    bool resolveAgain() { return m_held.empty() || resolve(); }

    /// Reads the present member, which has just been resolved.
    MemberReader& member() { return m_member; }

private:
    AbstractProperty* child() const;
    const AbstractProperty* atHand() const;
    const AbstractProperty* target();
    void lookAhead();

    QList<AbstractProperty*> m_children;
    std::vector<PropertyHandle> m_held; // the last children of the list, from the first one on that needs it
    int m_next = 0;
    MemberReader m_member;

    // Targets at hand of the children from the present one on, as far as they have been looked up; by position
    // modulo length. Not to be used once children are held.
    std::array<const AbstractProperty*, 8> m_ahead = {};
    int m_lookedUp = 0;
};

/// Which offsets of each member a run [start, end) of the whole takes.
///
/// All numbers are unsigned and wrap, the sum of the members' sizes too.
class MemberRuns
{
public:
    struct Run
    {
        bool isTaken;
        bool isWhole;        ///< all offsets of the member
        std::uint64_t start; ///< within the member, as is the end
        std::uint64_t end;
    };

    MemberRuns(std::uint64_t start, std::uint64_t end)
        : m_start(start)
        , m_end(end)
    {
    }

    /// The part of the next member, which has `size` offsets.
    Run next(std::uint64_t size);

    /// Whether the run ends behind the members that there were.
    bool endsBeyond() const { return m_end > m_position; }

private:
    std::uint64_t m_start;
    std::uint64_t m_end;
    std::uint64_t m_position = 0;
    bool m_started = false;
};

} // namespace Orrery
