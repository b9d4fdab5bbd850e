#pragma once

#include <cstdint>
#include <string>

namespace Orrery::Host {

/// One line on standard error that tells how far a long work is. It is rewritten in place, goes away at the end,
/// and is there only for a person: not when standard error is no terminal, and not for a file that is read before
/// anybody could read the line.
class ProgressLine
{
public:
    /// `what` stands before the percentage.
    explicit ProgressLine(const std::string& what);
    ~ProgressLine();
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    void update(std::uint64_t done, std::uint64_t all);

    /// Show a word, such as "saving", in place of the percentage from here on, if the line is there.
    void stage(const std::string& word);

private:
    void show(const std::string& state);

    std::string m_what;
    bool m_isTerminal;
    bool m_isShown = false;
    std::uint64_t m_percent = 0;
};

} // namespace Orrery::Host
