#include "variables/OffsetCountRun_p.h"

#include "variables/ReadInProgress_p.h"

#include <algorithm>

namespace Orrery {
namespace {

thread_local OffsetCountRun* s_innermost = nullptr;

/// Asked members after which a run keeps every count: some milliseconds.
constexpr std::uint64_t s_patience = 1U << 20U;

} // namespace

bool OffsetCountRun::find(const AbstractProperty& object, std::uint64_t* count)
{
    if (!s_innermost)
        return false;
    const auto& counts = s_innermost->m_run->counts;
    const auto found = counts.find(&object);
    if (found == counts.end())
        return false;
    *count = found->second;
    return true;
}

OffsetCountRun::OffsetCountRun(const ReadInProgress& read, std::uint64_t members)
    : m_outer(s_innermost)
    , m_run(m_outer ? m_outer->m_run : &m_ownRun)
    , m_depth(read.depth())
{
    if (!m_outer)
        m_ownRun.depth = m_depth;
    m_run->work += members + 1;
    s_innermost = this;
}

OffsetCountRun::~OffsetCountRun()
{
    s_innermost = m_outer;
    // What depends on this object itself is no dependence of what contains it.
    if (m_dependsOn < m_depth)
        noteDependence(m_dependsOn);
}

std::uint64_t OffsetCountRun::keep(const AbstractProperty& object, std::uint64_t count)
{
    if (m_outer && (m_dependsOn >= m_depth || m_run->work > s_patience))
        m_run->counts.emplace(&object, count);
    return count;
}

void OffsetCountRun::noteDependence(int depth) noexcept
{
    if (s_innermost && depth >= s_innermost->m_run->depth)
        s_innermost->m_dependsOn = std::min(s_innermost->m_dependsOn, depth);
}

void OffsetCountRun::noteNestingDependence() noexcept
{
    if (s_innermost)
        noteDependence(s_innermost->m_run->depth);
}

} // namespace Orrery
