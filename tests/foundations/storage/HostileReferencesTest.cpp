// References into other files that lead where they shouldn't, and what a host's code does while they are followed.
#include "foundations/property/PropertyHandle.h"
#include "foundations/property/PropertyObjectFactory.h"
#include "foundations/property/PropertyReference.h"
#include "tests/foundations/storage/DataFiles.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include <sys/stat.h>

namespace Orrery::StorageTest {
namespace {

const QString s_x = QStringLiteral("x");
const QString s_out = QStringLiteral("out");
const QString s_reacting = QStringLiteral("HostileReferencesReacting");
const QString s_chained = QStringLiteral("HostileReferencesChained");

/// A folder that does something when it has been loaded, and when it goes; a type name of its own.
class Reacting : public PropertyObject
{
public:
    Reacting() = default;
    ~Reacting() override
    {
        if (s_farewell)
            s_farewell();
    }
    const QString& PropertyObjType() const override { return s_reacting; }
    void OnDeserialization() override
    {
        if (s_reaction)
            s_reaction(*this);
    }

    static inline std::function<void(Reacting&)> s_reaction;
    static inline std::function<void()> s_farewell;
};

/// A file without a disk: "n" holds the node "x", and a reference "out" to that of the file "n + 1", up to a length. Files
/// beyond it aren't there.
class ChainedFile : public DataFile
{
public:
    static DataFile* Make(const QString& path, OpenMode mode) { return new ChainedFile(path, mode); }

    ChainedFile(const QString& path, OpenMode mode)
        : DataFile(path, mode)
    {
        ++s_alive;
    }
    ~ChainedFile() override { --s_alive; }
    ERESULT Load(QString* why) override
    {
        ++s_loads;
        if (GetPath().toInt() >= s_length) {
            *why = GetPath() + QStringLiteral(": beyond the end");
            return ER_NOT_FOUND;
        }
        auto root = std::make_unique<RootProperty>(this);
        AddFolder(*root, s_x);
        auto* const next = new PropertyReference(s_out);
        root->InsertProperty(next);
        next->RestorePath(QStringLiteral("/x"), QString::number(GetPath().toInt() + 1), s_chained);
        if (s_asksEarly)
            next->Resolve();
        ReplaceRoot(std::move(root));
        return ER_SUCCESS;
    }
    ERESULT Save(QString*) override { return ER_FAILED; }
    ERESULT Close() override
    {
        DropRoot();
        return ER_SUCCESS;
    }
    QString GetFileType() const override { return s_chained; }

    static inline int s_alive = 0;
    static inline int s_loads = 0;
    static inline int s_length = 0;
    static inline bool s_asksEarly = false;
};

PropertyObject* MakeReacting()
{
    return new Reacting;
}

class HostileReference : public ::testing::Test
{
protected:
    HostileReference()
    {
        PropertyObjectFactory::Instance().RegisterType(s_reacting, &MakeReacting);
        DataFileFactory::Instance().RegisterFileType(s_chained, &ChainedFile::Make);
        Reacting::s_reaction = nullptr;
        ChainedFile::s_loads = 0;
        ChainedFile::s_asksEarly = false;
    }
    ~HostileReference() override
    {
        Reacting::s_reaction = nullptr;
        Reacting::s_farewell = nullptr;
    }

    /// A file in memory with a reference "out" to the node "x" of the file at `path`.
    std::shared_ptr<DataFile> Referrer(const QString& path,
                                       const QString& type = QStringLiteral("HDF5")) const
    {
        auto file = Open(m_here, DataFile::Create);
        AddStored(*file, s_out, path, type);
        return file;
    }
    static PropertyReference* AddStored(DataFile& file, const QString& name, const QString& path,
                                        const QString& type = QStringLiteral("HDF5"))
    {
        auto* const reference = new PropertyReference(name);
        EXPECT_GE(file.GetRoot()->InsertProperty(reference), 0);
        reference->RestorePath(QStringLiteral("/x"), path, type);
        return reference;
    }
    static PropertyReference* Out(DataFile& file) { return file.GetRoot()->GetPtr<PropertyReference>(s_out); }

    /// A saved file with the folder "x" and one that reacts to being loaded.
    void SaveReacting(const QString& path) const
    {
        SaveNew(path, [](PropertyObject& root) {
            AddFolder(root, s_x);
            auto* const reacting = new Reacting;
            reacting->SetName(QStringLiteral("reacting"));
            ASSERT_GE(root.InsertProperty(reacting), 0);
        });
    }

    ScratchFolder m_folder;
    QString m_here = m_folder.Path(QStringLiteral("here.h5"));
    QString m_there = m_folder.Path(QStringLiteral("there.h5"));
};

// --- what is no data file

struct NoDataFile
{
    const char* name;
    QString (*make)(const ScratchFolder& folder); ///< gives its path
    const char* reason;
};

QString MakeFifo(const ScratchFolder& folder)
{
    const QString path = folder.Path(QStringLiteral("fifo"));
    EXPECT_EQ(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    return path;
}

QString MakeFolder(const ScratchFolder& folder)
{
    EXPECT_TRUE(QDir(folder.Path(QString())).mkdir(QStringLiteral("folder.h5")));
    return folder.Path(QStringLiteral("folder.h5"));
}

QString MakeText(const ScratchFolder& folder)
{
    const QString path = folder.Path(QStringLiteral("text.h5"));
    WriteFile(path, QByteArray(5000, 'x'));
    return path;
}

QString MakeTruncated(const ScratchFolder& folder)
{
    const QString path = folder.Path(QStringLiteral("truncated.h5"));
    SaveNew(path, [](PropertyObject& root) { AddFolder(root, s_x); });
    const QByteArray whole = ReadFile(path);
    WriteFile(path, whole.left(whole.size() / 2));
    return path;
}

QString MakeUnreadable(const ScratchFolder& folder)
{
    const QString path = folder.Path(QStringLiteral("loop.h5"));
    EXPECT_TRUE(QFile::link(path, path));
    return path;
}

QString NameWithNul(const ScratchFolder& folder)
{
    const QString path = folder.Path(QStringLiteral("real.h5"));
    SaveNew(path, [](PropertyObject& root) { AddFolder(root, s_x); });
    return path + QChar(0) + QStringLiteral(".h5");
}

class ReferenceToNoDataFile : public HostileReference, public ::testing::WithParamInterface<NoDataFile>
{
};

TEST_P(ReferenceToNoDataFile, IsUnresolvedAndToldInOneLine)
{
    const QString path = GetParam().make(m_folder);
    const auto here = Referrer(path);
    const LogCapture log;
    EXPECT_EQ(Out(*here)->Resolve(), nullptr);
    EXPECT_EQ(Out(*here)->ResolveConst(), nullptr);
    EXPECT_FALSE(Out(*here)->IsRefPropertyObject());
    ASSERT_EQ(log.Warnings().size(), 1);
    EXPECT_TRUE(IsOneLineAbout(log.Warnings()[0], m_here)) << qPrintable(log.Warnings()[0]);
    EXPECT_TRUE(log.Warnings()[0].contains(QLatin1String(GetParam().reason)))
        << qPrintable(log.Warnings()[0]);
}

QString Device(const ScratchFolder& /*folder*/)
{
    return QStringLiteral("/dev/zero");
}

QString FarUp(const ScratchFolder& folder)
{
    return folder.Path(QStringLiteral("../../../../../../../../../../etc/passwd"));
}

QString NotUnicode(const ScratchFolder& folder)
{
    return folder.Path(QStringLiteral("lone ") + QChar(0xD800));
}

QString LineBreak(const ScratchFolder& folder)
{
    return folder.Path(QStringLiteral("a\nwarning: b"));
}

QString Long(const ScratchFolder& folder)
{
    return folder.Path(QString(100000, QChar('n')));
}

constexpr NoDataFile s_noDataFiles[] = {
    {"Device", &Device, "not a regular file"},
    {"Fifo", &MakeFifo, "not a regular file"},
    {"Folder", &MakeFolder, "not a regular file"},
    {"Text", &MakeText, "not an HDF5 file"},
    {"Truncated", &MakeTruncated, "truncated.h5: "},
    {"LinkToItself", &MakeUnreadable, "loop.h5: "},
    {"NameWithNul", &NameWithNul, "not a file name"},
    {"FarUp", &FarUp, "not an HDF5 file"},
    {"NotUnicode", &NotUnicode, "No such file"},
    {"LineBreak", &LineBreak, "No such file"},
    {"Long", &Long, "too long"},
};

INSTANTIATE_TEST_SUITE_P(Paths, ReferenceToNoDataFile, ::testing::ValuesIn(s_noDataFiles),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(HostileReference, FindsEachOfTwoFilesOfOneUid)
{
    SaveNew(m_there, [](PropertyObject& root) { AddFolder(root, s_x); });
    const QString copy = m_folder.Path(QStringLiteral("copy.h5"));
    ASSERT_TRUE(QFile::copy(m_there, copy));
    const auto here = Referrer(m_there);
    const PropertyReference* const other = AddStored(*here, QStringLiteral("other"), copy);
    EXPECT_EQ(Out(*here)->Resolve()->GetDataFile()->GetPath(), m_there);
    EXPECT_EQ(other->Resolve()->GetDataFile()->GetPath(), copy);
    EXPECT_EQ(Out(*here)->ReferenceFile().uid, other->ReferenceFile().uid);
}

TEST_F(HostileReference, DoesNotFindItselfInItsOwnFile)
{
    const auto here = Referrer(m_here);
    Out(*here)->RestorePath(QStringLiteral("/out"), m_here, QStringLiteral("HDF5"));
    EXPECT_EQ(Out(*here)->Resolve(), nullptr);
}

TEST_F(HostileReference, ToAFileWhoseObjectsRefuseItIsUnresolved)
{
    SaveReacting(m_there);
    Reacting::s_reaction = [](Reacting&) { throw std::runtime_error("no"); };
    const auto here = Referrer(m_there);
    const LogCapture log;
    EXPECT_EQ(Out(*here)->Resolve(), nullptr);
    ASSERT_EQ(log.Warnings().size(), 1);
    EXPECT_TRUE(log.Warnings()[0].endsWith(m_there + QStringLiteral(": /reacting: no")))
        << qPrintable(log.Warnings()[0]);
}

// --- files that load one another

TEST_F(HostileReference, IntoTheFileThatIsJustBeingLoadedWaitsForIt)
{
    SaveReacting(m_there);
    {
        const auto there = Open(m_there, DataFile::ReadWrite);
        AddStored(*there, s_out, m_here);
        ASSERT_EQ(there->Save(), ER_SUCCESS);
    }
    SaveReacting(m_here);
    {
        const auto here = Open(m_here, DataFile::ReadWrite);
        AddStored(*here, s_out, m_there);
        ASSERT_EQ(here->Save(), ER_SUCCESS);
    }
    int asked = 0;
    int found = 0;
    Reacting::s_reaction = [&](Reacting& reacting) {
        auto* const top = reacting.GetParent();
        ++asked;
        found += top->GetPtr<PropertyReference>(s_out)->Resolve() ? 1 : 0;
    };
    const LogCapture log;
    const auto here = Open(m_here);
    EXPECT_EQ(asked, 2);
    EXPECT_EQ(found, 1) << "the inner one finds nothing yet";
    const auto there = DataFileFactory::Instance().FindOpen(m_there);
    ASSERT_NE(there, nullptr) << "held by the tree that asked while it was loaded";
    EXPECT_EQ(Out(*there)->Resolve(), here->GetRoot()->GetPropertyPtr(s_x));
    EXPECT_EQ(Out(*here)->Resolve(), there->GetRoot()->GetPropertyPtr(s_x));
    EXPECT_EQ(log.Warnings(), QStringList());
}

TEST_F(HostileReference, FileThatOpensItselfWhileItLoadsIsRefusedInside)
{
    SaveReacting(m_there);
    Outcome inner;
    Reacting::s_reaction = [&](Reacting&) { inner = TryOpen(m_there); };
    const Outcome outer = TryOpen(m_there);
    EXPECT_EQ(outer.code, ER_SUCCESS);
    EXPECT_EQ(inner.code, ER_FAILED);
    EXPECT_TRUE(IsOneLineAbout(inner.why, m_there)) << qPrintable(inner.why);
}

TEST_F(HostileReference, OneMayDestroyTheOneThatAsks)
{
    SaveReacting(m_there);
    const auto here = Referrer(m_there);
    const PropertyReference* const out = Out(*here);
    Reacting::s_reaction = [&](Reacting&) { here->GetRoot()->DeleteProperty(s_out); };
    EXPECT_EQ(out->Resolve(), nullptr);
    EXPECT_FALSE(here->GetRoot()->HasProperty(s_out));
}

TEST_F(HostileReference, OneMayCloseTheFileOfTheOneThatAsks)
{
    SaveReacting(m_there);
    auto here = Referrer(m_there);
    const PropertyReference* const out = Out(*here);
    Reacting::s_reaction = [&](Reacting&) { here.reset(); };
    EXPECT_EQ(out->Resolve(), nullptr);
    EXPECT_EQ(DataFileFactory::Instance().FindOpen(m_there), nullptr) << "nobody is left to hold it";
}

TEST_F(HostileReference, OneMayDestroyTheOneThatTakesItOver)
{
    SaveReacting(m_there);
    const auto here = Referrer(m_there);
    auto* const taker = new PropertyReference(QStringLiteral("taker"));
    ASSERT_GE(here->GetRoot()->InsertProperty(taker), 0);
    Reacting::s_reaction = [&](Reacting&) { here->GetRoot()->DeleteProperty(QStringLiteral("taker")); };
    *taker = *Out(*here);
    EXPECT_FALSE(here->GetRoot()->HasProperty(QStringLiteral("taker")));
    EXPECT_NE(Out(*here)->Resolve(), nullptr);
}

TEST_F(HostileReference, OneMayDestroyTheOneThatIsTakenOver)
{
    SaveReacting(m_there);
    const auto here = Referrer(m_there);
    auto* const taker = new PropertyReference(QStringLiteral("taker"));
    ASSERT_GE(here->GetRoot()->InsertProperty(taker), 0);
    Reacting::s_reaction = [&](Reacting&) { here->GetRoot()->DeleteProperty(s_out); };
    *taker = *Out(*here);
    EXPECT_FALSE(here->GetRoot()->HasProperty(s_out));
    EXPECT_EQ(taker->ReferencePath(), QString()) << "there was nothing left to take over";
}

TEST_F(HostileReference, MayBeAskedWhileItsTreeIsDestroyed)
{
    class AsksAtItsEnd : public PropertyObject
    {
    public:
        explicit AsksAtItsEnd(std::function<void()> ask)
            : PropertyObject(QStringLiteral("asks"))
            , m_ask(std::move(ask))
        {
        }
        ~AsksAtItsEnd() override { m_ask(); }

    private:
        std::function<void()> m_ask;
    };
    SaveNew(m_there, [](PropertyObject& root) { AddFolder(root, s_x); });
    auto here = Referrer(m_there);
    const PropertyHandle out(Out(*here));
    int asked = 0;
    const auto ask = [&] {
        const auto* const reference = dynamic_cast<const PropertyReference*>(out.Get());
        ASSERT_NE(reference, nullptr);
        EXPECT_EQ(reference->Resolve(), nullptr);
        ++asked;
    };
    ASSERT_GE(here->GetRoot()->InsertProperty(new AsksAtItsEnd(ask)), 0); // "asks" goes before "out"
    here.reset();
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(DataFileFactory::Instance().FindOpen(m_there), nullptr);
}

TEST_F(HostileReference, MayBeAskedWhileItsFileIsLetGoWithATreeThatLivedOn)
{
    SaveReacting(m_there);
    auto here = Referrer(m_there);
    const PropertyReference* const out = Out(*here);
    ASSERT_NE(out->Resolve(), nullptr);
    here->SetOwnsFileContents(false);
    std::unique_ptr<DataFile::RootProperty> tree(here->GetRoot());
    here.reset();
    int asked = 0;
    Reacting::s_farewell = [&] {
        EXPECT_EQ(out->Resolve(), nullptr);
        ++asked;
    };
    tree.reset();
    EXPECT_EQ(asked, 1) << "the file isn't opened again for a tree that can't hold it";
    EXPECT_EQ(DataFileFactory::Instance().FindOpen(m_there), nullptr);
}

TEST_F(HostileReference, FindsTheNewTreeWhileTheFormerOneGoes)
{
    SaveReacting(m_there);
    const auto here = Referrer(m_there);
    ASSERT_NE(Out(*here)->Resolve(), nullptr);
    const auto there = DataFileFactory::Instance().FindOpen(m_there);
    const AbstractProperty* found = nullptr;
    Reacting::s_farewell = [&] { found = Out(*here)->Resolve(); };
    ASSERT_EQ(there->Load(), ER_SUCCESS);
    Reacting::s_farewell = nullptr;
    EXPECT_EQ(found, there->GetRoot()->GetPropertyPtr(s_x));
    EXPECT_EQ(Out(*here)->Resolve(), found);
    EXPECT_EQ(DataFileFactory::Instance().FindOpen(m_there), there) << "one file is one tree";
}

TEST_F(HostileReference, FileMayBeLoadedAgainWhileItsFormerTreeGoes)
{
    SaveReacting(m_there);
    const auto there = Open(m_there);
    int left = 1;
    int alive = 1;
    Reacting::s_reaction = [&](Reacting&) { ++alive; };
    Reacting::s_farewell = [&] {
        --alive;
        if (left-- > 0) {
            EXPECT_EQ(there->Load(), ER_SUCCESS);
        }
    };
    ASSERT_EQ(there->Load(), ER_SUCCESS);
    EXPECT_EQ(alive, 1) << "a tree that nobody has is gone";
    ASSERT_NE(there->GetRoot(), nullptr);
    EXPECT_TRUE(there->GetRoot()->HasProperty(s_x));
    Reacting::s_farewell = nullptr;
}

TEST_F(HostileReference, FileThatIsClosedWhileItsFormerTreeGoesStaysClosed)
{
    SaveReacting(m_there);
    const auto there = Open(m_there);
    bool first = true;
    Reacting::s_farewell = [&] {
        if (std::exchange(first, false)) {
            EXPECT_EQ(there->Close(), ER_SUCCESS);
        }
    };
    EXPECT_EQ(there->Load(), ER_SUCCESS);
    EXPECT_EQ(there->GetRoot(), nullptr);
}

// --- many

TEST_F(HostileReference, ToOneFileThatIsNotThereAsksForItOnceHoweverManyThereAre)
{
    ChainedFile::s_length = 0;
    const auto here = Open(m_here, DataFile::Create);
    const LogCapture log;
    for (int i = 0; i < 10000; ++i)
        EXPECT_EQ(AddStored(*here, QString::number(i), QStringLiteral("7"), s_chained)->Resolve(), nullptr);
    EXPECT_EQ(ChainedFile::s_loads, 1);
    EXPECT_EQ(log.Warnings().size(), 1);
}

TEST_F(HostileReference, ToOneFileLoadsItOnceHoweverManyThereAre)
{
    ChainedFile::s_length = 8;
    const auto here = Open(m_here, DataFile::Create);
    for (int i = 0; i < 10000; ++i)
        EXPECT_NE(AddStored(*here, QString::number(i), QStringLiteral("7"), s_chained)->Resolve(), nullptr);
    EXPECT_EQ(ChainedFile::s_loads, 1);
}

TEST_F(HostileReference, WantingOtherUidsLoadsAFileOnce)
{
    SaveReacting(m_there);
    const auto here = Open(m_here, DataFile::Create);
    int loads = 0;
    Reacting::s_reaction = [&](Reacting&) { ++loads; };
    const LogCapture log;
    for (int i = 0; i < 100; ++i) {
        PropertyReference* const wrong = AddStored(*here, QString::number(i), m_there);
        wrong->RestorePath(QStringLiteral("/x"), {m_there, QString(), QString(), QString::number(i)});
        EXPECT_EQ(wrong->Resolve(), nullptr);
    }
    EXPECT_EQ(loads, 1);
    EXPECT_EQ(log.Warnings().size(), 1);
    EXPECT_NE(AddStored(*here, s_out, m_there)->Resolve(), nullptr) << "one that knows no uid takes it";
}

TEST_F(HostileReference, ChainThroughFilesOfAnyLengthIsFollowedAndLetGo)
{
    constexpr int length = 50000;
    ChainedFile::s_length = length;
    auto here = Referrer(QStringLiteral("0"), s_chained);
    const PropertyReference* reference = Out(*here);
    int steps = 0;
    const LogCapture log;
    while (const AbstractProperty* const x = reference->Resolve()) {
        ++steps;
        reference = x->GetParent()->GetPtr<PropertyReference>(s_out);
    }
    EXPECT_EQ(steps, length);
    EXPECT_EQ(ChainedFile::s_alive, length);
    EXPECT_EQ(log.Warnings().size(), 1) << "of the one beyond the end";
    here.reset(); // on a stack that wouldn't do for one call of a destructor within the other
    EXPECT_EQ(ChainedFile::s_alive, 0);
}

TEST_F(HostileReference, FilesThatLoadOneAnotherNestOnlySoDeep)
{
    ChainedFile::s_length = 1000;
    ChainedFile::s_asksEarly = true;
    auto here = Referrer(QStringLiteral("0"), s_chained);
    const LogCapture log;
    EXPECT_NE(Out(*here)->Resolve(), nullptr);
    EXPECT_EQ(ChainedFile::s_loads, 32);
    EXPECT_EQ(log.Warnings(), QStringList());
    const PropertyReference* reference = Out(*here);
    int steps = 0;
    while (const AbstractProperty* const x = reference->Resolve()) {
        ++steps;
        reference = x->GetParent()->GetPtr<PropertyReference>(s_out);
    }
    EXPECT_EQ(steps, 1000) << "the rest is opened when it is asked for";
    here.reset();
    EXPECT_EQ(ChainedFile::s_alive, 0);
}

} // namespace
} // namespace Orrery::StorageTest
