#include "variables/ReadInProgress_p.h"

#include "variables/OffsetCountRun_p.h"

#include <limits>

namespace Orrery {
namespace {

thread_local const ReadInProgress* s_innermost = nullptr;
thread_local std::uint64_t s_tooDeep = 0;

} // namespace

ReadInProgress::ReadInProgress(const AbstractProperty& object) noexcept
    : m_object(&object)
{
    const ReadInProgress* const outer = s_innermost;
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

std::uint64_t ReadInProgress::nestedElements() noexcept
{
    std::uint64_t sum = 0;
    std::uint64_t outermost = 0;
    for (const ReadInProgress* read = s_innermost; read; read = read->m_outer) {
        if (read->m_expected == 0)
            continue;
        if (__builtin_add_overflow(sum, outermost, &sum))
            return std::numeric_limits<std::uint64_t>::max();
        outermost = read->m_expected;
    }
    return sum;
}

} // namespace Orrery
