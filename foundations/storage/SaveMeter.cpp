#include "foundations/storage/SaveMeter_p.h"

#include <algorithm>
#include <stdexcept>

namespace Orrery {

namespace {

constexpr std::uint64_t s_step = std::uint64_t(4) * 1024 * 1024;

} // namespace

SaveMeter::SaveMeter(const DataFile::SaveProgress& listener, std::uint64_t total)
    : m_listener(listener)
    , m_total(total)
{
    Tell();
}

void SaveMeter::Advance(std::uint64_t bytes)
{
    m_done = std::min(m_done + bytes, m_total);
    if (m_done - m_told >= s_step)
        Tell();
}

void SaveMeter::Finish()
{
    m_done = m_total;
    Tell();
}

void SaveMeter::Tell()
{
    m_told = m_done;
    if (m_listener && !m_listener(m_done, m_total))
        throw std::runtime_error("the save was cancelled"); // no StorageError: no array is to blame
}

} // namespace Orrery
