// Files may be opened, saved and looked for from any thread, each file's tree being one thread's at a time.
#include "tests/foundations/storage/CompareTrees.h"
#include "tests/foundations/storage/DataFiles.h"

#include "foundations/property/PropertyObjectFactory.h"
#include "foundations/variant/VariantOperations.h"

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

// One of them reads, the others wait for it and share what it has read.
TEST(ConcurrentFiles, GiveOneReadOfAnArrayToAllThreadsThatAskForIt)
{
    const ScratchFolder folder;
    const QString path = folder.Path(QStringLiteral("tree.h5"));
    for (const int compression : {0, 1}) {
        {
            const auto file = SaveNew(path, [](PropertyObject& root) {
                AddValue(root, QStringLiteral("x"), BVariant(std::vector<double>(1U << 20U, 2.5)));
            });
            ASSERT_EQ(file->SetCompressionLevel(compression), ER_SUCCESS);
            ASSERT_EQ(TrySave(*file).why, QString());
        }
        for (int round = 0; round < 5; ++round) {
            const auto file = Open(path);
            std::vector<BVariant> copies(s_threads, ValueOf(*file->GetRoot(), QStringLiteral("x")));
            std::vector<const void*> elements(s_threads);
            file->Close();
            OnThreads([&](int thread) {
                const auto i = static_cast<std::size_t>(thread);
                elements[i] = copies[i].constData();
                EXPECT_EQ(static_cast<const double*>(elements[i])[12345], 2.5);
                copies[i] = BVariant();
            });
            for (const void* const each : elements)
                EXPECT_EQ(each, elements.front());
        }
    }
}

// Parts, wholes, writes, a save and an open of one file, all at once.
TEST(ConcurrentFiles, ReadArraysInEveryWayAtOnce)
{
    const ScratchFolder folder;
    const QString path = folder.Path(QStringLiteral("tree.h5"));
    constexpr std::uint64_t count = 3U << 19U; // three blocks
    SaveNew(path, [](PropertyObject& root) {
        std::vector<double> numbers(count);
        for (std::size_t i = 0; i < numbers.size(); ++i)
            numbers[i] = static_cast<double>(i);
        AddValue(root, QStringLiteral("x"), BVariant(std::move(numbers)));
    }).reset();
    for (int round = 0; round < 5; ++round) {
        auto file = Open(path, DataFile::ReadWrite);
        std::vector<BVariant> copies(s_threads, ValueOf(*file->GetRoot(), QStringLiteral("x")));
        OnThreads([&](int thread) {
            BVariant& mine = copies[static_cast<std::size_t>(thread)];
            double number = 0.0;
            for (std::uint64_t at = 0; thread == 0 && at < count; at += 50'000) {
                copyElements(mine, at, 1, &number);
                EXPECT_EQ(number, static_cast<double>(at));
            }
            if (thread == 1) {
                static_cast<double*>(mine.mutableData())[7] = -1.0;
                EXPECT_EQ(static_cast<const double*>(mine.constData())[8], 8.0);
            }
            if (thread == 2) {
                EXPECT_EQ(TrySave(*file).why, QString());
            }
            if (thread == 3) {
                EXPECT_EQ(static_cast<const double*>(mine.constData())[count - 1], double(count - 1));
            }
        });
        for (std::size_t thread : {std::size_t(0), std::size_t(2), std::size_t(3)})
            EXPECT_EQ(static_cast<const double*>(copies[thread].constData())[7], 7.0);
    }
}

// A handler of a load holds what guards the files while another thread reads an array.
class ReadingFolder : public PropertyObject
{
public:
    static BVariant s_array;

    static const QString& StaticType()
    {
        static const QString type = QStringLiteral("StorageTestReadingFolder");
        return type;
    }
    const QString& PropertyObjType() const override { return StaticType(); }
    void OnDeserialization() override { SetProperty(QStringLiteral("sum"), Sum()); }

    static double Sum()
    {
        const BVariant array = s_array;
        const auto* const numbers = static_cast<const double*>(array.constData());
        return numbers[0] + numbers[1];
    }
};

BVariant ReadingFolder::s_array;

TEST(ConcurrentFiles, LetAHandlerOfALoadReadWhatOtherThreadsRead)
{
    PropertyObjectFactory::Instance().RegisterType(ReadingFolder::StaticType(),
                                                   []() -> PropertyObject* { return new ReadingFolder; });
    const ScratchFolder folder;
    const QString numbers = folder.Path(QStringLiteral("numbers.h5"));
    const QString reader = folder.Path(QStringLiteral("reader.h5"));
    SaveNew(numbers, [](PropertyObject& root) {
        AddValue(root, QStringLiteral("x"), BVariant(std::vector<double>(2U << 20U, 1.5)));
    }).reset();
    SaveNew(reader, [](PropertyObject& root) {
        ASSERT_GE(root.InsertProperty(new ReadingFolder), 0);
    }).reset();
    for (int round = 0; round < 10; ++round) {
        ReadingFolder::s_array = ValueOf(*Open(numbers)->GetRoot(), QStringLiteral("x"));
        OnThreads([&](int thread) {
            if (thread % 2 == 0)
                EXPECT_EQ(TryOpen(reader).why, QString());
            else
                EXPECT_EQ(ReadingFolder::Sum(), 3.0);
        });
    }
    ReadingFolder::s_array = BVariant();
}

} // namespace Orrery::StorageTest
