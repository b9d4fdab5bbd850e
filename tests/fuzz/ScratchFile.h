#pragma once

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <unistd.h>

namespace Orrery {

/// A regular file of a fuzzer's own, in memory where the machine has such a folder, for code that wants a real path:
/// the HDF5 library follows a link such as /proc/self/fd/N to its end, where a file without a name can't be found.
class ScratchFile
{
public:
    ScratchFile()
        : m_path((::access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp") + std::string("/orrery-fuzz-XXXXXX"))
    {
        const int descriptor = ::mkstemp(m_path.data());
        if (descriptor < 0)
            std::abort();
        ::close(descriptor);
    }
    ~ScratchFile() { ::unlink(m_path.c_str()); }
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;

    const std::string& Path() const { return m_path; }

    void Write(const std::uint8_t* data, std::size_t size) const
    {
        std::ofstream file(m_path, std::ios::binary | std::ios::trunc);
        file.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
        if (!file.flush())
            std::abort();
    }

    std::vector<std::uint8_t> Read() const
    {
        std::ifstream file(m_path, std::ios::binary);
        const std::vector<char> bytes((std::istreambuf_iterator<char>(file)),
                                      std::istreambuf_iterator<char>());
        return {bytes.begin(), bytes.end()};
    }

private:
    std::string m_path;
};

} // namespace Orrery
