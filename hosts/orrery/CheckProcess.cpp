#include "hosts/orrery/CheckProcess.h"

#include "hosts/orrery/Failure.h"
#include "hosts/orrery/PlainText.h"

#include <QString>
#include <QStringList>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <exception>

namespace Orrery::Host {

namespace {

// Each message is one line: a letter, then its fields after tabs. Fields have gone through printable() and hold none.
constexpr char s_error = 'E';
constexpr char s_warning = 'W';
constexpr char s_progress = 'P';
constexpr char s_summary = 'S';

// A check keeps its structure and one array of texts in memory, whose elements may be 40 times as large as in the file.
constexpr std::uint64_t s_memoryAtLeast = 1U << 30U;
constexpr std::uint64_t s_memoryPerByte = 40;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool s_isMemoryLimited = false; // the sanitizers reserve terabytes of addresses
#else
constexpr bool s_isMemoryLimited = true;
#endif

using Clock = std::chrono::steady_clock;

std::string systemReason(int error)
{
    return std::strerror(error);
}

/// The started process and the end of the pipe at which it is heard.
class Child
{
public:
    explicit Child(const std::string& path);
    ~Child();
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    enum Hearing
    {
        Line,
        Silence, ///< nothing for as long as the child may be silent
        End      ///< of all that it has to say
    };
    Hearing listen(unsigned seconds, std::string* line);

    /// Wait for the end, forcing it first if `isForced`; the status of waitpid.
    int end(bool isForced);

private:
    bool takeLine(std::string* line);

    pid_t m_process = -1;
    int m_pipe = -1;
    std::string m_heard;
    std::size_t m_from = 0; ///< where the next line begins
};

Child::Child(const std::string& path)
{
    int ends[2] = {-1, -1};
    if (::pipe2(ends, O_CLOEXEC) != 0)
        throw Trouble("no pipe can be made: " + systemReason(errno));
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&files, ends[1], STDOUT_FILENO);
    // What a library says while it breaks down is no line for a person; how the process ends tells enough.
    posix_spawn_file_actions_addopen(&files, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    std::string words[] = {"orrery", "verify", "--in-child", "--", path};
    char* const arguments[] = {words[0].data(), words[1].data(), words[2].data(),
                               words[3].data(), words[4].data(), nullptr};
    const int error = ::posix_spawn(&m_process, "/proc/self/exe", &files, nullptr, arguments, environ);
    posix_spawn_file_actions_destroy(&files);
    ::close(ends[1]);
    m_pipe = ends[0];
    if (error != 0) {
        ::close(m_pipe);
        throw Trouble("no process can be started: " + systemReason(error));
    }
}

Child::~Child()
{
    ::close(m_pipe);
    if (m_process >= 0)
        end(true);
}

bool Child::takeLine(std::string* line)
{
    const std::size_t end = m_heard.find('\n', m_from);
    if (end == std::string::npos) {
        m_heard.erase(0, m_from);
        m_from = 0;
        return false;
    }
    line->assign(m_heard, m_from, end - m_from);
    m_from = end + 1;
    return true;
}

Child::Hearing Child::listen(unsigned seconds, std::string* line)
{
    const auto deadline = Clock::now() + std::chrono::seconds(seconds);
    while (!takeLine(line)) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        pollfd wait = {m_pipe, POLLIN, 0};
        const int ready = left > 0 ? ::poll(&wait, 1, static_cast<int>(left)) : 0;
        if (ready == 0)
            return Silence;
        if (ready < 0)
            continue; // a signal
        char bytes[4096];
        const ssize_t got = ::read(m_pipe, bytes, sizeof bytes);
        if (got == 0 || (got < 0 && errno != EINTR))
            return End;
        if (got > 0)
            m_heard.append(bytes, static_cast<std::size_t>(got));
    }
    return Line;
}

int Child::end(bool isForced)
{
    if (isForced)
        ::kill(m_process, SIGKILL);
    int status = 0;
    while (::waitpid(m_process, &status, 0) < 0 && errno == EINTR) {
    }
    m_process = -1;
    return status;
}

/// What the child has said.
class Conversation
{
public:
    explicit Conversation(const CheckListener& listener)
        : m_listener(listener)
    {
    }

    void hear(const std::string& line);
    bool isDone() const { return m_isDone; }
    const DataFileCheck::Summary& summary() const { return m_summary; }

private:
    void tell(DataFileCheck::Severity severity, const std::string& line);

    const CheckListener& m_listener;
    DataFileCheck::Summary m_summary;
    bool m_isDone = false;
};

void Conversation::tell(DataFileCheck::Severity severity, const std::string& line)
{
    // Counted here, so that they are also known of a process that doesn't come to its summary.
    ++(severity == DataFileCheck::Error ? m_summary.errors : m_summary.warnings);
    m_listener.finding(severity, printable(line));
}

void Conversation::hear(const std::string& line)
{
    const QStringList fields = QString::fromStdString(line).split(QLatin1Char('\t'));
    const auto number = [&](int i) { return fields.value(i).toULongLong(); };
    switch (line.empty() ? '\0' : line[0]) {
    case s_error:
        tell(DataFileCheck::Error, line.substr(2));
        break;
    case s_warning:
        tell(DataFileCheck::Warning, line.substr(2));
        break;
    case s_progress:
        m_listener.progress(number(1), number(2));
        break;
    case s_summary:
        m_summary.folders = number(1);
        m_summary.values = number(2);
        m_summary.references = number(3);
        m_summary.fileBytes = number(4);
        m_isDone = true;
        break;
    default:
        break;
    }
}

std::string reasonOfEnd(int status)
{
    if (WIFSIGNALED(status))
        return std::string("the check was ended by a signal: ") + ::strsignal(WTERMSIG(status));
    return "the check ended early, with the code " + std::to_string(WEXITSTATUS(status));
}

// A line that is written whole or not at all; nobody is left to hear of a failure.
void say(const std::string& line)
{
    for (std::size_t done = 0; done < line.size();) {
        const ssize_t put = ::write(STDOUT_FILENO, line.data() + done, line.size() - done);
        if (put < 0 && errno != EINTR)
            ::_exit(ExitFailed);
        if (put > 0)
            done += static_cast<std::size_t>(put);
    }
}

std::string message(char kind, std::initializer_list<std::uint64_t> numbers)
{
    std::string line(1, kind);
    for (const std::uint64_t number : numbers)
        line += '\t' + std::to_string(number);
    return line + '\n';
}

std::string message(const DataFileCheck::Finding& finding)
{
    std::string line(1, finding.severity == DataFileCheck::Error ? s_error : s_warning);
    line += '\t';
    if (!finding.path.isEmpty())
        line += printable(finding.path.toStdString()) + ": ";
    return line + printable(finding.text.toStdString()) + '\n';
}

void limit(__rlimit_resource_t resource, rlim_t value)
{
    rlimit limits = {};
    ::getrlimit(resource, &limits);
    limits.rlim_cur = std::min(value, limits.rlim_max);
    ::setrlimit(resource, &limits);
}

void limitOneself(const std::string& path)
{
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    limit(RLIMIT_CORE, 0);
    struct stat status = {};
    if (s_isMemoryLimited && ::stat(path.c_str(), &status) == 0)
        limit(RLIMIT_AS, s_memoryAtLeast + s_memoryPerByte * static_cast<std::uint64_t>(status.st_size));
}

} // namespace

CheckOutcome checkInProcess(const std::string& path, unsigned timeout, const CheckListener& listener)
{
    Child child(path);
    Conversation conversation(listener);
    std::string line;
    Child::Hearing hearing = Child::Line;
    while ((hearing = child.listen(timeout, &line)) == Child::Line)
        conversation.hear(line);
    const int status = child.end(hearing == Child::Silence);
    CheckOutcome outcome{conversation.summary(), std::string()};
    if (hearing == Child::Silence)
        outcome.death = "the check made no progress for " + std::to_string(timeout) + " s and was ended";
    else if (status != 0 || !conversation.isDone())
        outcome.death = reasonOfEnd(status);
    return outcome;
}

void runCheckProcess(const std::string& path)
{
    limitOneself(path);
    try {
        const DataFileCheck::Summary summary = DataFileCheck::Run(
            QString::fromStdString(path),
            [](const DataFileCheck::Finding& finding) { say(message(finding)); },
            [](std::uint64_t done, std::uint64_t all) {
                say(message(s_progress, {done, all}));
            });
        say(message(s_summary, {summary.folders, summary.values, summary.references, summary.fileBytes}));
        ::_exit(ExitGood); // past the library's cleaning up, which may never end after a damaged file
    } catch (const std::exception& error) {
        say(std::string(1, s_error) + '\t' + printable(error.what()) + '\n');
    }
    ::_exit(ExitFailed);
}

} // namespace Orrery::Host
