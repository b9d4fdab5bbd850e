#include "hosts/orrery/ReplacedFile.h"

#include "hosts/orrery/Failure.h"
#include "hosts/orrery/PlainText.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace Orrery::Host {

namespace {

constexpr std::array<int, 3> s_requests = {SIGINT, SIGTERM, SIGHUP};
std::array<struct sigaction, 3> s_former = {};
char s_unfinished[PATH_MAX];

extern "C" void removeUnfinished(int request)
{
    ::unlink(s_unfinished);
    ::raise(request); // has its default action again, and ends the program once this returns
}

/// Lets no request to end come between the steps of its lifetime.
class WithoutRequests
{
public:
    WithoutRequests()
    {
        sigset_t requests;
        ::sigemptyset(&requests);
        for (const int request : s_requests)
            ::sigaddset(&requests, request);
        ::pthread_sigmask(SIG_BLOCK, &requests, &m_former);
    }
    ~WithoutRequests() { ::pthread_sigmask(SIG_SETMASK, &m_former, nullptr); }
    WithoutRequests(const WithoutRequests&) = delete;
    WithoutRequests& operator=(const WithoutRequests&) = delete;

private:
    sigset_t m_former = {};
};

// A request that the program's caller ignores stays ignored.
void removeOnRequest(const std::string& path)
{
    path.copy(s_unfinished, sizeof s_unfinished - 1);
    s_unfinished[std::min(path.size(), sizeof s_unfinished - 1)] = '\0';
    struct sigaction action = {};
    action.sa_handler = &removeUnfinished;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    ::sigfillset(&action.sa_mask);
    for (std::size_t i = 0; i < s_requests.size(); ++i) {
        ::sigaction(s_requests[i], nullptr, &s_former[i]);
        if (s_former[i].sa_handler != SIG_IGN) // NOLINT(performance-no-int-to-ptr): the system's own macro
            ::sigaction(s_requests[i], &action, nullptr);
    }
}

void keepOnRequest()
{
    for (std::size_t i = 0; i < s_requests.size(); ++i)
        ::sigaction(s_requests[i], &s_former[i], nullptr);
}

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
    const WithoutRequests pause;
    m_descriptor = ::mkostemp(m_path.data(), O_CLOEXEC);
    if (m_descriptor < 0)
        fail();
    removeOnRequest(m_path);
    static_cast<void>(::fchmod(m_descriptor, modeFor(m_target))); // some file systems have no modes
}

ReplacedFile::~ReplacedFile()
{
    if (m_descriptor < 0)
        return;
    ::close(m_descriptor);
    ::unlink(m_path.c_str());
    keepOnRequest();
}

void ReplacedFile::commit()
{
    if (::fsync(m_descriptor) != 0 || std::rename(m_path.c_str(), m_target.c_str()) != 0)
        fail();
    keepOnRequest();
    ::close(m_descriptor);
    m_descriptor = -1;
}

void ReplacedFile::fail() const
{
    throw Failure(printable(m_name) + ": " + std::strerror(errno));
}

} // namespace Orrery::Host
