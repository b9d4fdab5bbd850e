#pragma once

#include "foundations/storage/DataFile.h"

#include <cstdint>

namespace Orrery {

/// Counts the bytes of a save and tells whoever listens, often enough for a person and seldom enough to cost nothing.
class SaveMeter
{
public:
    /// Tells that nothing is done yet. Errors: as Advance.
    SaveMeter(const DataFile::SaveProgress& listener, std::uint64_t total);

    /// Count bytes that were written.
    ///
    /// Errors: throws std::runtime_error when the listener gives the save up, and what the listener throws.
    void Advance(std::uint64_t bytes);

    /// Tell that all is written. Errors: as Advance.
    void Finish();

private:
    void Tell();

    DataFile::SaveProgress m_listener; ///< a copy: it may put another one in its place
    std::uint64_t m_total;
    std::uint64_t m_done = 0;
    std::uint64_t m_told = 0;
};

} // namespace Orrery
