#include "tests/foundations/storage/ForkedProcess.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Orrery::StorageTest {

namespace {

constexpr unsigned int s_patienceSeconds = 120;
constexpr int s_exceptionCode = 99;

} // namespace

pid_t StartChild(const std::function<int()>& body)
{
    std::fflush(nullptr);
    const pid_t child = ::fork();
    if (child < 0)
        throw std::runtime_error("no child process");
    if (child != 0)
        return child;
    ::alarm(s_patienceSeconds);
    int code = s_exceptionCode;
    try {
        code = body();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "in the child process: %s\n", error.what());
    }
    std::exit(code);
}

int EndOfChild(pid_t child)
{
    int status = 0;
    if (::waitpid(child, &status, 0) != child)
        throw std::runtime_error("the child process is lost");
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

int RunInChild(const std::function<int()>& body)
{
    return EndOfChild(StartChild(body));
}

void LimitFileSize(unsigned long bytes, bool survive)
{
    const rlimit noCore = {0, 0};
    rlimit size = {};
    if (std::signal(SIGXFSZ, survive ? SIG_IGN : SIG_DFL) == SIG_ERR ||
        ::setrlimit(RLIMIT_CORE, &noCore) != 0 || ::getrlimit(RLIMIT_FSIZE, &size) != 0)
        throw std::runtime_error("limits can't be set");
    size.rlim_cur = bytes == 0 ? size.rlim_max : bytes;
    if (::setrlimit(RLIMIT_FSIZE, &size) != 0)
        throw std::runtime_error("limits can't be set");
}

void BecomeNobody()
{
    constexpr uid_t nobody = 65534;
    if (::geteuid() == 0 && (::setgid(nobody) != 0 || ::setuid(nobody) != 0))
        throw std::runtime_error("the rights of the superuser can't be given up");
}

} // namespace Orrery::StorageTest
