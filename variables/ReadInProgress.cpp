#include "variables/ReadInProgress_p.h"

#include "variables/OffsetCountRun_p.h"

#include <algorithm>

namespace Orrery {
namespace {

thread_local const ReadInProgress* s_innermost = nullptr;
thread_local std::uint64_t s_tooDeep = 0;
thread_local std::uint64_t s_asked = 0;

} // namespace

ReadInProgress::ReadInProgress(const AbstractProperty& object) noexcept
    : m_object(&object)
{
    const ReadInProgress* const outer = s_innermost;
    if (!outer)
        s_asked = 0;
    if (outer && outer->m_depth >= MaxDepth) {
        OffsetCountRun::noteNestingDependence();
        ++s_tooDeep;
    } else if (!covers(object)) {
        m_outer = outer;
        m_depth = outer ? outer->m_depth + 1 : 1;
        s_innermost = this;
    }
}

ReadInProgress::~ReadInProgress()
{
    if (!isRefused())
        s_innermost = m_outer;
}

bool ReadInProgress::covers(const AbstractProperty& object) noexcept
{
    for (const ReadInProgress* read = s_innermost; read; read = read->m_outer) {
        if (read->m_object == &object) {
            OffsetCountRun::noteDependence(read->m_depth);
            return true;
        }
    }
    return false;
}

std::uint64_t ReadInProgress::tooDeepCount() noexcept
{
    return s_tooDeep;
}

void ReadInProgress::noteTooDeep() noexcept
{
    ++s_tooDeep;
}

void ReadInProgress::noteAsked(std::uint64_t members) noexcept
{
    s_asked += members;
}

std::uint64_t ReadInProgress::askedCount() noexcept
{
    return s_asked;
}

std::uint64_t ReadInProgress::expectedBetween() noexcept
{
    std::uint64_t most = 0;
    std::uint64_t outermost = 0;
    for (const ReadInProgress* read = s_innermost ? s_innermost->m_outer : nullptr; read;
         read = read->m_outer) {
        if (read->m_expected == 0)
            continue;
        most = std::max(most, outermost);
        outermost = read->m_expected;
    }
    return most;
}

} // namespace Orrery
