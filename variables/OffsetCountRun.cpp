#include "variables/OffsetCountRun_p.h"

#include "variables/ReadInProgress_p.h"

#include <algorithm>

namespace Orrery {
namespace {

thread_local OffsetCountRun* s_innermost = nullptr;

/// Whether so many members were asked, which takes some milliseconds, that every count is kept from now on.
bool isOutOfPatience()
{
    constexpr std::uint64_t patience = 1U << 20U;
    return ReadInProgress::askedCount() > patience;
}

} // namespace

OffsetCountRun::Pause::Pause() noexcept
    : m_paused(s_innermost && !s_innermost->m_isPaused ? s_innermost : nullptr)
{
    if (m_paused)
        m_paused->m_isPaused = true;
}

OffsetCountRun::Pause::~Pause()
{
    if (!m_paused)
        return;
    m_paused->m_isPaused = false;
    if (!isOutOfPatience())
        m_paused->m_run->counts.clear();
}

bool OffsetCountRun::find(const AbstractProperty& object, std::uint64_t* count)
{
    if (!s_innermost || s_innermost->m_isPaused)
        return false;
    const auto& counts = s_innermost->m_run->counts;
    const auto found = counts.find(&object);
    if (found == counts.end() || found->second.object.IsExpired())
        return false;
    *count = found->second.count;
    return true;
}

OffsetCountRun::OffsetCountRun(const AbstractProperty& object, const ReadInProgress& read,
                               std::uint64_t members)
    : m_outer(s_innermost)
    , m_isOutermost(!m_outer || m_outer->m_isPaused)
    , m_ownRun{{}, m_outer, read.depth()}
    , m_run(m_isOutermost ? &m_ownRun : m_outer->m_run)
    , m_depth(read.depth())
{
    if (!m_isOutermost)
        m_object = PropertyHandle(&object);
    ReadInProgress::noteAsked(members + 1);
    s_innermost = this;
}

OffsetCountRun::~OffsetCountRun()
{
    s_innermost = m_outer;
    // What depends on this object itself is no dependence of what contains it.
    if (m_dependsOn < m_depth)
        noteDependence(m_dependsOn);
}

std::uint64_t OffsetCountRun::keep(std::uint64_t count)
{
    if (const AbstractProperty* const object = m_object.Get()) {
        if (m_dependsOn == s_nothing || isOutOfPatience())
            m_run->counts.insert_or_assign(object, Kept{m_object, count});
    }
    return count;
}

/// Of the runs that interrupt one another it is the business of the innermost one that began before that
/// read.
void OffsetCountRun::noteDependence(int depth) noexcept
{
    OffsetCountRun* count = s_innermost;
    while (count && depth < count->m_run->depth)
        count = count->m_run->paused;
    if (count)
        count->m_dependsOn = std::min(count->m_dependsOn, depth);
}

void OffsetCountRun::noteNestingDependence() noexcept
{
    for (OffsetCountRun* count = s_innermost; count; count = count->m_run->paused)
        count->m_dependsOn = std::min(count->m_dependsOn, count->m_run->depth);
}

} // namespace Orrery
