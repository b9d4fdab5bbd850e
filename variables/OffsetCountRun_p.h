#pragma once

#include "foundations/property/PropertyHandle.h"

#include <cstdint>
#include <limits>
#include <unordered_map>

namespace Orrery {

class AbstractProperty;
class ReadInProgress;

/// Counts the offsets of one joined object while its members are asked for theirs.
///
/// Of members that are joined objects themselves each is counted once in a run, which lasts as long as the
/// outermost one of these: sixty concatenations, each of which holds the one before twice, are sixty sums and
/// not 2^60. A count that depends on what is being read holds in that place only and isn't kept, and none
/// outlasts code of a host, which may change the tree. Where this takes too long for the read that all is
/// done for, because members contain one another in too many ways, such counts are kept all the same.
class OffsetCountRun
{
public:
    /// To be made where code of a host may run, for as long as it does: it takes no part in the present run.
    /// What the host asks for meanwhile is counted in runs of its own.
    class Pause
    {
    public:
        Pause() noexcept;
        ~Pause();
        Pause(const Pause&) = delete;
        Pause& operator=(const Pause&) = delete;

    private:
        OffsetCountRun* m_paused; // null if there is nothing to pause
    };

    /// The count of an object that the present run has come across; false without one.
    static bool find(const AbstractProperty& object, std::uint64_t* count);

    /// Begin to count `object`, which `read` has noted, and which asks `members` members.
    OffsetCountRun(const AbstractProperty& object, const ReadInProgress& read, std::uint64_t members);
    ~OffsetCountRun();

    OffsetCountRun(const OffsetCountRun&) = delete;
    OffsetCountRun& operator=(const OffsetCountRun&) = delete;

    /// Keep the count of the object, which may be gone, for the rest of the run. Returns it.
    std::uint64_t keep(std::uint64_t count);

    /// To be called when an answer depends on the read that was noted at that depth.
    static void noteDependence(int depth) noexcept;

    /// To be called when an answer depends on how many objects are being read.
    static void noteNestingDependence() noexcept;

private:
    static constexpr int s_nothing = std::numeric_limits<int>::max();

    struct Kept
    {
        PropertyHandle object; // there may be another one at its address
        std::uint64_t count;
    };
    struct Run
    {
        std::unordered_map<const AbstractProperty*, Kept> counts;
        OffsetCountRun* paused; // what the run interrupts; null without one
        int depth; // of the outermost count; what was noted before that stays the same for the whole run
    };

    OffsetCountRun* m_outer;
    bool m_isOutermost; // of its run
    bool m_isPaused = false;
    Run m_ownRun; // used by the outermost one
    Run* m_run;
    PropertyHandle m_object; // of all others
    int m_depth;
    int m_dependsOn = s_nothing;
};

} // namespace Orrery
