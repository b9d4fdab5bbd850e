// Files may be opened, saved and looked for from any thread, each file's tree being one thread's at a time.
#include "tests/foundations/storage/CompareTrees.h"
#include "tests/foundations/storage/DataFiles.h"

#include "foundations/property/PropertyObjectFactory.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace Orrery::StorageTest {

using Brindle::Quay::BVariant;

namespace {

constexpr int s_threads = 4;

// Run the same on several threads at once; they begin together.
void OnThreads(const std::function<void(int thread)>& body)
{
    std::atomic<int> waiting{s_threads};
    std::vector<std::thread> threads;
    for (int i = 0; i < s_threads; ++i)
        threads.emplace_back([&, i] {
            for (--waiting; waiting > 0;)
                std::this_thread::yield();
            body(i);
        });
    for (std::thread& thread : threads)
        thread.join();
}

Builder Numbers(int number)
{
    return [number](PropertyObject& root) {
        AddValue(root, QStringLiteral("number"), BVariant(number));
        AddValue(*AddFolder(root, QStringLiteral("f")), QStringLiteral("array"),
                 BVariant(std::vector<double>(100, number)));
    };
}

// A host's type that opens another file while it is loaded.
class Opener : public PropertyObject
{
public:
    static QString s_other;

    static const QString& StaticType()
    {
        static const QString type = QStringLiteral("StorageTestOpener");
        return type;
    }
    const QString& PropertyObjType() const override { return StaticType(); }
    void OnDeserialization() override { SetProperty(QStringLiteral("found"), TryOpen(s_other).code >= 0); }
};

QString Opener::s_other;

} // namespace

TEST(ConcurrentFiles, GiveOneObjectToAllThreadsThatOpenOneFile)
{
    const ScratchFolder folder;
    const QString path = folder.Path(QStringLiteral("tree.h5"));
    SaveNew(path, Numbers(1)).reset();
    for (int round = 0; round < 25; ++round) {
        std::vector<Outcome> outcomes(s_threads);
        OnThreads([&](int thread) { outcomes[static_cast<std::size_t>(thread)] = TryOpen(path); });
        for (const Outcome& outcome : outcomes) {
            ASSERT_EQ(outcome.code, ER_SUCCESS) << outcome.why.toStdString();
            EXPECT_EQ(outcome.file, outcomes.front().file);
        }
    }
}

TEST(ConcurrentFiles, MayBeLetGoWhileOthersOpenThem)
{
    const ScratchFolder folder;
    const QString path = folder.Path(QStringLiteral("tree.h5"));
    SaveNew(path, Numbers(1)).reset();
    std::atomic<int> faults{0};
    OnThreads([&](int /*thread*/) {
        for (int i = 0; i < 25; ++i) {
            const Outcome outcome = TryOpen(path);
            if (outcome.code < 0 || !outcome.file->GetRoot()->HasProperty(QStringLiteral("f")))
                ++faults;
            const auto found = DataFileFactory::Instance().FindOpen(path);
            if (found != outcome.file)
                ++faults;
        }
    });
    EXPECT_EQ(faults, 0);
    EXPECT_EQ(DataFileFactory::Instance().FindOpen(path), nullptr);
}

TEST(ConcurrentFiles, AreSavedAndReadSideBySide)
{
    const ScratchFolder folder;
    std::vector<std::string> differences(s_threads);
    OnThreads([&](int thread) {
        const QString path = folder.Path(QString::number(thread) + QStringLiteral(".h5"));
        for (int i = 0; i < 10; ++i) {
            const Builder build = Numbers(100 * thread + i);
            SaveNew(path, build).reset();
            const auto file = Open(path);
            DataFile::RootProperty original(nullptr);
            build(original);
            differences[static_cast<std::size_t>(thread)] += CompareTrees(original, *file->GetRoot());
        }
    });
    EXPECT_EQ(differences, std::vector<std::string>(s_threads));
    EXPECT_EQ(folder.Strays(), QStringList());
}

TEST(ConcurrentFiles, MayBringFileTypesFromAnyThread)
{
    std::atomic<int> taken{0};
    OnThreads([&](int /*thread*/) {
        for (int i = 0; i < 50; ++i) {
            const auto make = [](const QString&, DataFile::OpenMode) -> DataFile* { return nullptr; };
            if (DataFileFactory::Instance().RegisterFileType(QStringLiteral("Concurrent%1").arg(i), make) >=
                0)
                ++taken;
            DataFileFactory::Instance().GetFileTypes();
        }
    });
    EXPECT_EQ(taken, 50) << "each is taken from one thread only";
}

// An object that opens a file while its own is loaded must not make two threads wait for each other.
TEST(ConcurrentFiles, MayOpenEachOtherWhileTheyAreLoaded)
{
    const ScratchFolder folder;
    Opener::s_other = folder.Path(QStringLiteral("other.h5"));
    PropertyObjectFactory::Instance().RegisterType(Opener::StaticType(),
                                                   [] { return static_cast<PropertyObject*>(new Opener); });
    SaveNew(Opener::s_other, Numbers(1)).reset();
    std::atomic<int> faults{0};
    for (int thread = 0; thread < s_threads; ++thread) {
        const QString path = folder.Path(QString::number(thread));
        SaveNew(path, [](PropertyObject& root) {
            auto* const opener = new Opener;
            opener->SetName(QStringLiteral("opener"));
            root.InsertProperty(opener);
        }).reset();
    }
    OnThreads([&](int thread) {
        const QString path = folder.Path(QString::number(thread));
        for (int i = 0; i < 25; ++i) {
            const Outcome outcome = TryOpen(path);
            if (outcome.code < 0 || outcome.file->Load() < 0)
                ++faults;
        }
    });
    EXPECT_EQ(faults, 0);
}

} // namespace Orrery::StorageTest
