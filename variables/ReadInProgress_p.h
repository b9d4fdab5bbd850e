#pragma once

#include <cstdint>

namespace Orrery {

class AbstractProperty;

/// Notes, as long as it lives, that an object which is put together from others is being read on this thread.
///
/// A tree can hold such objects that contain themselves, at once or by any detour. An object that is being
/// read already counts as a member that doesn't resolve; so every reading operation makes one of these first
/// and fails if it is refused, and asks covers() before it goes into a member.
/// Edge:   refused as well behind MaxDepth nested ones, so that the stack bears any tree.
/// Cost:   a few loads for each one that is noted; no allocation.
class ReadInProgress
{
public:
    static constexpr int MaxDepth = 1000;

    explicit ReadInProgress(const AbstractProperty& object) noexcept;
    ~ReadInProgress();

    ReadInProgress(const ReadInProgress&) = delete;
    ReadInProgress& operator=(const ReadInProgress&) = delete;

    /// Whether nothing was noted: the object is being read already, or too many are.
    bool isRefused() const noexcept { return m_depth == 0; }

    /// The number of noted objects on this thread, this one included; 0 if it is refused.
    int depth() const noexcept { return m_depth; }

    /// Whether that object is being read on this thread.
    static bool covers(const AbstractProperty& object) noexcept;

    /// How many were refused on this thread, ever, because too many were noted: a number to compare with itself.
    static std::uint64_t tooDeepCount() noexcept;

    /// Count a read as refused for that: of what was put together while others were.
    static void noteTooDeep() noexcept;

    /// Count members that are asked for their offsets.
    static void noteAsked(std::uint64_t members) noexcept;

    /// How many members were asked since the outermost noted read on this thread began: the work so far of all
    /// reads that it is made of.
    static std::uint64_t askedCount() noexcept;

    /// Tell how many elements the read of this object is going to put together in memory.
    void expectElements(std::uint64_t count) noexcept { m_expected = count; }

    /// The most elements that any noted read on this thread expects which contains the innermost one and is
    /// contained in the outermost one; 0 without any.
    static std::uint64_t expectedBetween() noexcept;

private:
    const AbstractProperty* m_object;
    const ReadInProgress* m_outer = nullptr;
    int m_depth = 0;
    std::uint64_t m_expected = 0;
};

} // namespace Orrery
