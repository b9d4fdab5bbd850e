#pragma once

#include <cstdint>
#include <cstdlib>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

namespace Orrery {

/// The bytes of one fuzzer input as a file in memory, for code that wants a path.
class TemporaryInput
{
public:
    TemporaryInput(const std::uint8_t* data, std::size_t size)
        : m_descriptor(::memfd_create("input", 0))
    {
        for (std::size_t done = 0; done < size;) {
            const ssize_t written = ::write(m_descriptor, data + done, size - done);
            if (written <= 0)
                std::abort();
            done += static_cast<std::size_t>(written);
        }
    }
    ~TemporaryInput() { ::close(m_descriptor); }
    TemporaryInput(const TemporaryInput&) = delete;
    TemporaryInput& operator=(const TemporaryInput&) = delete;

    std::string Path() const { return "/proc/self/fd/" + std::to_string(m_descriptor); }

private:
    int m_descriptor;
};

} // namespace Orrery
