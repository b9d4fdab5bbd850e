#pragma once

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
/// not 2^60. A count that depends on what is being read further out holds in that place only and isn't kept.
/// Where members contain one another in so many ways that this takes too long, such counts are kept all the
/// same.
class OffsetCountRun
{
public:
    /// The count of an object that the present run has come across; false without one.
    static bool find(const AbstractProperty& object, std::uint64_t* count);

    /// Begin to count the object that `read` has noted, which asks `members` members.
    OffsetCountRun(const ReadInProgress& read, std::uint64_t members);
    ~OffsetCountRun();

    OffsetCountRun(const OffsetCountRun&) = delete;
    OffsetCountRun& operator=(const OffsetCountRun&) = delete;

    /// Keep the count for the rest of the run. Returns it.
    std::uint64_t keep(const AbstractProperty& object, std::uint64_t count);

    /// To be called when an answer depends on the read that was noted at that depth.
    static void noteDependence(int depth) noexcept;

    /// To be called when an answer depends on how many objects are being read.
    static void noteNestingDependence() noexcept;

private:
    struct Kept
    {
        std::unordered_map<const AbstractProperty*, std::uint64_t> counts;
        std::uint64_t work = 0;
        int depth = 0; // of the outermost count; what was noted before that stays the same for the whole run
    };

    OffsetCountRun* m_outer;
    Kept* m_run;
    Kept m_ownRun; // used by the outermost one
    int m_depth;
    int m_dependsOn = std::numeric_limits<int>::max();
};

} // namespace Orrery
