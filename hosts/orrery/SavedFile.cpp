#include "hosts/orrery/SavedFile.h"

#include "hosts/orrery/Failure.h"
#include "hosts/orrery/ProgressLine.h"
#include "hosts/orrery/TreeAccess.h"

#include <array>
#include <cstddef>
#include <functional>

#include <signal.h>

namespace Orrery::Host {

namespace {

volatile sig_atomic_t s_request = 0;

extern "C" void noteRequest(int signal)
{
    s_request = signal;
}

/// Keeps a request to end until the work can be ended cleanly. One that the program's caller ignores stays ignored.
class DelayedEnd
{
public:
    DelayedEnd()
    {
        s_request = 0;
        struct sigaction note = {};
        note.sa_handler = &noteRequest;
        note.sa_flags = SA_RESTART;
        ::sigemptyset(&note.sa_mask);
        for (std::size_t i = 0; i < s_signals.size(); ++i) {
            ::sigaction(s_signals[i], nullptr, &m_former[i]);
            if (m_former[i].sa_handler !=
                SIG_IGN) // NOLINT(performance-no-int-to-ptr): the system's own macro
                ::sigaction(s_signals[i], &note, nullptr);
        }
    }
    ~DelayedEnd()
    {
        for (std::size_t i = 0; i < s_signals.size(); ++i)
            ::sigaction(s_signals[i], &m_former[i], nullptr);
        if (s_request != 0)
            ::raise(s_request);
    }
    DelayedEnd(const DelayedEnd&) = delete;
    DelayedEnd& operator=(const DelayedEnd&) = delete;

    static bool isWanted() { return s_request != 0; }

private:
    static constexpr std::array<int, 3> s_signals = {SIGINT, SIGTERM, SIGHUP};
    std::array<struct sigaction, 3> m_former = {};
};

void saveBy(const std::function<ERESULT(QString*)>& save, DataFile& file, const std::string& path)
{
    QString why;
    ERESULT code = ER_FAILED;
    {
        const DelayedEnd end; // outlives the line, so that nothing of it stays on the terminal
        ProgressLine line("saving " + path);
        file.SetSaveProgress([&line](std::uint64_t done, std::uint64_t total) {
            line.update(done, total);
            return !DelayedEnd::isWanted();
        });
        code = save(&why);
        file.SetSaveProgress({});
    }
    if (code < 0)
        throw Failure(fileLine(path, why));
}

} // namespace

void saveDataFile(DataFile& file, const std::string& path)
{
    saveBy([&](QString* why) { return file.SaveAs(QString::fromStdString(path), why); }, file, path);
}

void saveInPlace(DataFile& file, const std::string& path)
{
    saveBy([&](QString* why) { return file.Save(why); }, file, path);
}

} // namespace Orrery::Host
