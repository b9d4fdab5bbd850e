#include "hosts/orrery/Output.h"

#include "hosts/orrery/Failure.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace Orrery::Host {

Output::Output()
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
        const ssize_t count = ::write(STDOUT_FILENO, from, left);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0 && errno == EPIPE)
            throw ReaderGone();
        if (count < 0)
            throw Failure(std::string("standard output: ") + std::strerror(errno));
        from += count;
        left -= static_cast<std::size_t>(count);
    }
    m_buffer.clear();
}

} // namespace Orrery::Host
