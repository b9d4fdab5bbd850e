// Signals of a Variable that reach a client on another thread.

#include "tests/tracking/ChangeTestSupport.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QMetaObject>
#include <QThread>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace Orrery {
namespace {

/// Qt delivers queued calls only in a process that has an application object.
class Application : public testing::Environment
{
public:
    void SetUp() override { m_application = std::make_unique<QCoreApplication>(m_count, m_arguments); }
    void TearDown() override { m_application.reset(); }

private:
    int m_count = 1;
    char m_name[5] = "test";
    char* m_arguments[2] = {m_name, nullptr};
    std::unique_ptr<QCoreApplication> m_application;
};

[[maybe_unused]] const testing::Environment* const s_application =
    testing::AddGlobalTestEnvironment(new Application); // owned by GoogleTest

/// Counts what arrives, and on which thread.
class ThreadedClient : public ISlotNotifyable
{
public:
    ISlotNotifyable& Update() override { return heard(updates); }
    ISlotNotifyable& Removed() override { return heard(removals); }
    ISlotNotifyable& Renamed() override { return heard(renamings); }

    std::atomic<int> updates{0};
    std::atomic<int> removals{0};
    std::atomic<int> renamings{0};
    std::atomic<int> onOtherThreads{0}; ///< than the client's own

private:
    ISlotNotifyable& heard(std::atomic<int>& count)
    {
        onOtherThreads += QThread::currentThread() != thread();
        ++count;
        return *this;
    }
};

/// A client that lives on a thread of its own with an event loop.
///
/// What this thread and that one share is atomic: the thread sanitizer doesn't see the locks within Qt.
class ClientOnAThread
{
public:
    ClientOnAThread()
        : m_thread([this] { run(); })
    {
        while (!m_client)
            std::this_thread::yield();
    }

    ~ClientOnAThread()
    {
        m_finished = true;
        QMetaObject::invokeMethod(m_loop.load(), "quit", Qt::QueuedConnection);
        m_thread.join();
    }

    ThreadedClient& client() { return *m_client; }

    /// Wait until everything has arrived that was queued for the client so far.
    void settle()
    {
        Variable::Notifier last;
        QObject::connect(&last, SIGNAL(Modified()), m_fence.load(), SLOT(Update()), Qt::QueuedConnection);
        const int before = m_fence.load()->updates;
        last.Modify();
        while (m_fence.load()->updates == before)
            std::this_thread::yield();
    }

private:
    void run()
    {
        ThreadedClient client;
        ThreadedClient fence;
        QEventLoop loop;
        m_loop = &loop;
        m_fence = &fence;
        m_client = &client;
        while (!m_finished)
            loop.exec();
    }

    std::atomic<bool> m_finished{false};
    std::atomic<QEventLoop*> m_loop{nullptr};
    std::atomic<ThreadedClient*> m_fence{nullptr};
    std::atomic<ThreadedClient*> m_client{nullptr};
    std::thread m_thread;
};

TEST(QueuedSignals, ReachAClientOnItsOwnThread)
{
    ClientOnAThread other;
    {
        Variable variable(QStringLiteral("x"));
        other.client().ConnectTo(variable, Qt::QueuedConnection);
        for (int i = 0; i < 100; ++i)
            variable.UpdateData(numbers({double(i)}));
        EXPECT_GE(variable.SetName(QStringLiteral("y")), 0);
        other.settle();
        EXPECT_EQ(other.client().updates, 100);
        EXPECT_EQ(other.client().renamings, 1);
        EXPECT_EQ(other.client().removals, 0);
    }
    other.settle();
    EXPECT_EQ(other.client().removals, 1); // sent before the sender was gone
    EXPECT_EQ(other.client().onOtherThreads, 0);
}

TEST(QueuedSignals, AreChosenByAnAutomaticConnection)
{
    ClientOnAThread other;
    Variable variable(QStringLiteral("x"));
    other.client().ConnectTo(variable, Qt::AutoConnection);
    variable.UpdateData(numbers({1}));
    other.settle();
    EXPECT_EQ(other.client().updates, 1);
    EXPECT_EQ(other.client().onOtherThreads, 0);
}

TEST(QueuedSignals, ComeFromAWriterOnAnotherThreadToTheLoopOfThisOne)
{
    ThreadedClient client;
    Variable variable(QStringLiteral("x"));
    client.ConnectTo(variable, Qt::QueuedConnection);
    std::thread writer([&] {
        for (int i = 0; i < 100; ++i)
            variable.UpdateData(numbers({double(i), 1}));
    });
    writer.join();
    EXPECT_EQ(client.updates, 0);
    QCoreApplication::sendPostedEvents(&client);
    EXPECT_EQ(client.updates, 100);
    EXPECT_EQ(client.onOtherThreads, 0);
    EXPECT_EQ(variable.GetMaxIndepOffset(), 2u);
}

TEST(QueuedSignals, AreNotSwallowedWhileTheHandlersOfAnEarlierOneRun)
{
    // The guard covers handlers that run within the emission; a queued one runs after it.
    ThreadedClient client;
    Variable variable(QStringLiteral("x"));
    client.ConnectTo(variable, Qt::QueuedConnection);
    QMetaObject::Connection chain;
    int answers = 0;
    chain = QObject::connect(
        variable.getNotifier(), &Variable::Notifier::Modified, &client,
        [&] {
            if (++answers < 5)
                variable.UpdateData();
        },
        Qt::QueuedConnection);
    variable.UpdateData();
    QEventLoop loop;
    while (loop.processEvents())
        ;
    EXPECT_EQ(answers, 5);
    EXPECT_EQ(client.updates, 5);
    QObject::disconnect(chain);
}

TEST(QueuedSignals, StopAfterDisconnect)
{
    ClientOnAThread other;
    Variable variable(QStringLiteral("x"));
    other.client().ConnectTo(variable, Qt::QueuedConnection);
    variable.UpdateData(numbers({1}));
    other.settle();
    other.client().DisconnectFrom(variable);
    variable.UpdateData(numbers({2}));
    other.settle();
    EXPECT_EQ(other.client().updates, 1);
}

TEST(DirectSignals, RunOnTheThreadOfTheEmitter)
{
    ClientOnAThread other;
    Variable variable(QStringLiteral("x"));
    other.client().ConnectTo(variable, Qt::DirectConnection);
    variable.UpdateData(numbers({1}));
    EXPECT_EQ(other.client().updates, 1);
    EXPECT_EQ(other.client().onOtherThreads, 1);
}

// Of two threads that announce a change at once, one emits for sure, and each emission is counted once.
TEST(DirectSignals, OfTwoEmittersAreEachCounted)
{
    for (int round = 0; round < 200; ++round) {
        ThreadedClient client;
        Variable::Notifier notifier;
        QObject::connect(&notifier, SIGNAL(Modified()), &client, SLOT(Update()), Qt::DirectConnection);
        std::atomic<int> ready{0};
        const auto emitter = [&] {
            ++ready;
            while (ready < 2)
                std::this_thread::yield();
            notifier.Modify();
        };
        std::thread other(emitter);
        emitter();
        other.join();
        ASSERT_GE(client.updates, 1) << "round " << round;
        ASSERT_LE(client.updates, 2) << "round " << round;
        ASSERT_EQ(client.updates, notifier.getDirtyTracker()->getUpdateCount());
    }
}

} // namespace
} // namespace Orrery
