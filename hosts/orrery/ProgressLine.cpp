#include "hosts/orrery/ProgressLine.h"

#include "hosts/orrery/PlainText.h"

#include <unistd.h>

namespace Orrery::Host {

namespace {

constexpr std::uint64_t s_long = 8U << 20U; // bytes; less than this is a matter of milliseconds
const char s_eraseLine[] = "\r\033[K";

// A progress line that can't be written isn't worth an error.
void writeError(const std::string& text)
{
    const ssize_t count = ::write(STDERR_FILENO, text.data(), text.size());
    static_cast<void>(count);
}

} // namespace

ProgressLine::ProgressLine(const std::string& what)
    : m_what("orrery: " + printable(what) + ": ")
    , m_isTerminal(::isatty(STDERR_FILENO) == 1)
{
}

ProgressLine::~ProgressLine()
{
    if (m_isShown)
        writeError(s_eraseLine);
}

void ProgressLine::update(std::uint64_t done, std::uint64_t all)
{
    if (!m_isTerminal || all < s_long)
        return;
    const std::uint64_t percent = done / (all / 100);
    if (m_isShown && percent == m_percent)
        return;
    m_percent = percent;
    show(std::to_string(percent < 100 ? percent : 100) + " %");
}

void ProgressLine::stage(const std::string& word)
{
    if (m_isShown)
        show(word);
}

void ProgressLine::show(const std::string& state)
{
    writeError(s_eraseLine + m_what + state);
    m_isShown = true;
}

} // namespace Orrery::Host
