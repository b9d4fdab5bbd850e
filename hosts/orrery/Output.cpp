#include "hosts/orrery/Output.h"

#include "hosts/orrery/Failure.h"
#include "hosts/orrery/PlainText.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace Orrery::Host {

Output::Output()
    : Output(STDOUT_FILENO, "standard output")
{
}

Output::Output(int descriptor, const std::string& name)
    : m_descriptor(descriptor)
    , m_name(printable(name))
{
    m_buffer.reserve(s_full + 4096);
}

void Output::write(std::string_view text)
{
    m_buffer += text;
    written();
}

void Output::flush()
{
    const char* from = m_buffer.data();
    std::size_t left = m_buffer.size();
    while (left > 0) {
        const ssize_t count = ::write(m_descriptor, from, left);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0 && errno == EPIPE)
            throw ReaderGone();
        if (count < 0)
            throw Failure(m_name + ": " + std::strerror(errno));
        from += count;
        left -= static_cast<std::size_t>(count);
    }
    m_buffer.clear();
}

} // namespace Orrery::Host
