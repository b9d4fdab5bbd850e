#include "hosts/orrery/ReplacedFile.h"

#include "hosts/orrery/Failure.h"
#include "hosts/orrery/PlainText.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace Orrery::Host {

namespace {

std::string withoutLinks(const std::string& path)
{
    char resolved[PATH_MAX];
    return ::realpath(path.c_str(), resolved) ? std::string(resolved) : path;
}

// What a file that is made by its name would have, or the one that is there has.
mode_t modeFor(const std::string& target)
{
    struct stat status = {};
    if (::stat(target.c_str(), &status) == 0)
        return status.st_mode & 0777U;
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666U & ~mask;
}

} // namespace

ReplacedFile::ReplacedFile(const std::string& target)
    : m_name(target)
    , m_target(withoutLinks(target))
    , m_path(m_target + ".XXXXXX")
{
    m_descriptor = ::mkostemp(m_path.data(), O_CLOEXEC);
    if (m_descriptor < 0)
        fail();
    static_cast<void>(::fchmod(m_descriptor, modeFor(m_target))); // some file systems have no modes
}

ReplacedFile::~ReplacedFile()
{
    if (m_descriptor < 0)
        return;
    ::close(m_descriptor);
    ::unlink(m_path.c_str());
}

void ReplacedFile::commit()
{
    if (::fsync(m_descriptor) != 0 || std::rename(m_path.c_str(), m_target.c_str()) != 0)
        fail();
    ::close(m_descriptor);
    m_descriptor = -1;
}

void ReplacedFile::fail() const
{
    throw Failure(printable(m_name) + ": " + std::strerror(errno));
}

} // namespace Orrery::Host
