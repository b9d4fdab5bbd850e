// The power-cut model: the saving process is killed at its system calls, one after the other, and each time the old file
// or the new one is there, whole, and the next save goes through.
#include "tests/foundations/storage/CompareTrees.h"
#include "tests/foundations/storage/DataFiles.h"
#include "tests/foundations/storage/ForkedProcess.h"

#include "foundations/variant/VariantOperations.h"

#include <QDir>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <functional>
#include <iterator>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Orrery::StorageTest {

using Brindle::Quay::BVariant;

namespace {

// The system calls of a save, by their numbers, in order; the last one may be the one that wasn't made.
using SystemCalls = std::vector<long>;

// These change nothing on the disk, and a process makes more or fewer of them from run to run.
bool IsForMemory(long call)
{
    const long calls[] = {SYS_brk,     SYS_mmap,     SYS_munmap, SYS_mremap,
                          SYS_madvise, SYS_mprotect, SYS_futex,  SYS_sched_yield};
    return std::find(std::begin(calls), std::end(calls), call) != std::end(calls);
}

// A child that runs `body` under the eye of this process, from a stop that it makes by itself to its end.
class TracedProcess
{
public:
    explicit TracedProcess(const std::function<void(const std::function<void()>& begin)>& body)
    {
        m_child = StartChild([&] {
            // Not by exit(): what runs there isn't the save's, and the leak detector can't work in a traced process.
            body([] {
                if (::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0)
                    ::_exit(98);
                ::raise(SIGSTOP);
            });
            ::_exit(0);
            return 0;
        });
        if (!WIFSTOPPED(Wait()))
            throw std::runtime_error("the process can't be traced");
        ::ptrace(PTRACE_SETOPTIONS, m_child, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
    }

    // Let it make its system calls, and kill it when it is about to make the one of that number. All those that it
    // has begun; true in `*ended` when it has come to its good end before. Any other end (its own alarm, too) throws.
    SystemCalls RunUpTo(std::size_t number, bool* ended)
    {
        SystemCalls calls;
        bool isEntry = true;
        long signal = 0;
        for (;;) {
            ::ptrace(PTRACE_SYSCALL, m_child, nullptr, signal);
            const int status = Wait();
            *ended = WIFEXITED(status) && WEXITSTATUS(status) == 0;
            if (*ended)
                return calls;
            if (!WIFSTOPPED(status))
                throw std::runtime_error("the traced process ended by itself, with status " +
                                         std::to_string(status));
            const bool isCall = WSTOPSIG(status) == (SIGTRAP | 0x80);
            signal = isCall ? 0 : WSTOPSIG(status);
            if (!isCall)
                continue;
            if (isEntry) {
                __ptrace_syscall_info info = {};
                ::ptrace(PTRACE_GET_SYSCALL_INFO, m_child, sizeof info, &info);
                const auto call = static_cast<long>(info.entry.nr);
                if (!IsForMemory(call))
                    calls.push_back(call);
                if (calls.size() > number) {
                    ::kill(m_child, SIGKILL);
                    Wait();
                    return calls;
                }
            }
            isEntry = !isEntry;
        }
    }

private:
    int Wait() const
    {
        int status = 0;
        if (::waitpid(m_child, &status, 0) != m_child)
            throw std::runtime_error("the traced process is lost");
        return status;
    }

    pid_t m_child = -1;
};

const QString s_memory = QStringLiteral("/dev/shm");

void BuildEdition(PropertyObject& root, int edition, int folders)
{
    root.DeleteProperties();
    AddValue(root, QStringLiteral("edition"), BVariant(edition));
    AddValue(root, QStringLiteral("texts"), BVariant(std::vector<std::string>(50, std::string(20, 't'))));
    for (int i = 0; i < folders; ++i)
        AddValue(*AddFolder(root, QString::number(i)), QStringLiteral("Data"),
                 BVariant(std::vector<double>(2000, edition + i)));
}

class KilledSave : public ::testing::Test
{
protected:
    // In memory where that can be had: hundreds of saves would wait for a busy disk, and a killed process doesn't
    // take from the disk what the system has. The power cut itself isn't for a test.
    KilledSave()
        : m_folder(QFileInfo(s_memory).isWritable() ? s_memory : QDir::tempPath())
    {
    }

    void SetUp() override { m_path = m_folder.Path(QStringLiteral("tree.h5")); }

    // Save edition 2 over edition 1, up to that system call.
    SystemCalls SaveUpTo(std::size_t number, bool* ended)
    {
        TracedProcess saving([&](const std::function<void()>& begin) {
            const auto file = Open(m_path, DataFile::ReadWrite);
            BuildEdition(*file->GetRoot(), 2, m_folders);
            begin();
            if (file->Save() < 0)
                ::_exit(1);
        });
        return saving.RunUpTo(number, ended);
    }

    void MakeOld()
    {
        SaveNew(m_path, [&](PropertyObject& root) { BuildEdition(root, 1, m_folders); }).reset();
    }

    // The number of the edition that is there, whole.
    int Edition()
    {
        const auto file = Open(m_path);
        const int edition =
            Brindle::Quay::getScalar<int>(ValueOf(*file->GetRoot(), QStringLiteral("edition")));
        DataFile::RootProperty expected(nullptr);
        BuildEdition(expected, edition, m_folders);
        EXPECT_EQ(CompareTrees(expected, *file->GetRoot()), "");
        return edition;
    }

    void ExpectGoodAfter(std::size_t number)
    {
        SCOPED_TRACE(::testing::Message() << "killed at system call " << number);
        bool ended = false;
        const SystemCalls calls = SaveUpTo(number, &ended);
        const auto last = ended ? calls.end() : calls.end() - 1; // the last one wasn't made
        ASSERT_EQ(Edition(), std::find(calls.begin(), last, m_rename) != last ? 2 : 1);
        m_killed += ended ? 0 : 1;
        const auto file = Open(m_path, DataFile::ReadWrite);
        BuildEdition(*file->GetRoot(), 1, m_folders);
        ASSERT_EQ(TrySave(*file).why, QString());
        ASSERT_EQ(m_folder.Names(), QStringList{QStringLiteral("tree.h5")});
    }

    // Which system calls a whole save makes.
    SystemCalls AllCalls()
    {
        bool ended = false;
        SystemCalls calls = SaveUpTo(static_cast<std::size_t>(-1) / 2, &ended);
        EXPECT_TRUE(ended);
        EXPECT_EQ(Edition(), 2);
        MakeOldAgain();
        for (const long renaming : {SYS_renameat, SYS_renameat2}) {
            if (std::count(calls.begin(), calls.end(), renaming) == 1)
                m_rename = renaming;
        }
        EXPECT_NE(m_rename, -1);
        return calls;
    }

    void MakeOldAgain()
    {
        const auto file = Open(m_path, DataFile::ReadWrite);
        BuildEdition(*file->GetRoot(), 1, m_folders);
        ASSERT_EQ(file->Save(), ER_SUCCESS);
    }

    ScratchFolder m_folder;
    QString m_path;
    int m_folders = 0;
    long m_rename = -1;
    std::size_t m_killed = 0;
};

} // namespace

TEST_F(KilledSave, OfASmallTreeIsAtomicAtEverySystemCall)
{
    m_folders = 3;
    MakeOld();
    const std::size_t calls = AllCalls().size();
    ASSERT_GT(calls, 20U);
    for (std::size_t i = 0; i < calls && !HasFatalFailure(); ++i)
        ExpectGoodAfter(i);
    EXPECT_GE(m_killed + 1, calls);
}

TEST_F(KilledSave, OfALargerTreeIsAtomicAtEveryTwentiethSystemCallAndAtTheFirstOfEachKind)
{
    m_folders = 400;
    MakeOld();
    const SystemCalls calls = AllCalls();
    ASSERT_GT(calls.size(), 300U);
    std::set<std::size_t> numbers;
    std::set<long> kinds;
    for (std::size_t i = 0; i < calls.size(); ++i) {
        if (i % 20 == 0 || kinds.insert(calls[i]).second || i + 8 > calls.size())
            numbers.insert(i);
    }
    for (const std::size_t number : numbers) {
        ExpectGoodAfter(number);
        if (HasFatalFailure())
            return;
    }
    EXPECT_GE(m_killed + 1, numbers.size());
}

} // namespace Orrery::StorageTest
