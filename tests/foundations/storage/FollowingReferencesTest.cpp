// What a reference stands for after all that may happen to its target, in its own tree and in that of another file.
#include "foundations/property/PropertyPath.h"
#include "tests/foundations/storage/DataFiles.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>

namespace Orrery::StorageTest {
namespace {

using Brindle::Quay::BVariant;

enum class TargetTree
{
    Same,
    OtherFile
};

/// What a reference is expected to stand for.
enum class Found
{
    Nothing,
    Target,      ///< the node that it was made for, wherever that is
    Replacement, ///< one that has taken its place
    Clone        ///< the one beside it in a cloned folder
};

struct Scene;

/// One thing that happens, and what comes of it: for a reference that follows its target, which one in the same tree does
/// as soon as it is loaded and one into another file from the first question on; and for one that has only its path yet.
struct Event
{
    const char* name;
    void (*happen)(Scene& scene);
    Found following;
    Found byPath;
    Found inOneTree; ///< where the target and the reference are in one tree
};

enum class Holder
{
    Untouched,
    Renamed,
    Moved,
    Reloaded
};

PropertyObject& FolderAt(DataFile& file, const char* path)
{
    auto* const folder =
        dynamic_cast<PropertyObject*>(Property::FindProperty(file.GetRoot(), QString::fromLatin1(path)));
    if (!folder)
        throw std::runtime_error(path);
    return *folder;
}

/// Two files of the same folders, open for writing. "/all/holders/in/r" in the one stands for "/all/data/deep/t" in one of
/// them.
struct Scene
{
    explicit Scene(TargetTree tree)
    {
        const auto build = [](PropertyObject& root) {
            PropertyObject* const all = AddFolder(root, QStringLiteral("all"));
            AddFolder(*AddFolder(*all, QStringLiteral("holders")), QStringLiteral("in"));
            AddFolder(*AddFolder(*all, QStringLiteral("data")), QStringLiteral("deep"));
            AddFolder(*AddFolder(root, QStringLiteral("far")), QStringLiteral("away"));
        };
        here = SaveNew(herePath, build);
        there = SaveNew(therePath, build);
        DataFile& home = tree == TargetTree::Same ? *here : *there;
        const AbstractProperty* const t =
            AddValue(FolderAt(home, "/all/data/deep"), QStringLiteral("t"), BVariant(1.0));
        AddReference(FolderAt(*here, "/all/holders/in"), QStringLiteral("r"), *t);
        if (there->Save() < 0 || here->Save() < 0)
            throw std::runtime_error("the scene can't be saved");
        here.reset();
        there.reset();

        here = Open(herePath, DataFile::ReadWrite);
        there = Open(therePath, DataFile::ReadWrite);
        targetFile = tree == TargetTree::Same ? here.get() : there.get();
        otherFile = tree == TargetTree::Same ? there.get() : here.get();
        target = FolderAt(*targetFile, "/all/data/deep").GetPropertyPtr(QStringLiteral("t"));
        reference = FolderAt(*here, "/all/holders/in").GetPtr<PropertyReference>(QStringLiteral("r"));
    }

    PropertyObject& Folder(const char* path) const { return FolderAt(*targetFile, path); }
    void MoveTarget(PropertyObject& to)
    {
        ASSERT_EQ(target->GetParent()->RemoveProperty(target->GetName()), ER_SUCCESS);
        ASSERT_EQ(to.InsertProperty(target), ER_SUCCESS);
    }
    void Replace() { replacement = AddValue(Folder("/all/data/deep"), QStringLiteral("t"), BVariant(2.0)); }
    static PropertyObject& CloneInto(PropertyObject& folder, const PropertyObject& original)
    {
        std::unique_ptr<AbstractProperty> clone(original.Clone());
        clone->SetName(QStringLiteral("clone"));
        EXPECT_EQ(folder.InsertProperty(clone.get()), ER_SUCCESS);
        return *static_cast<PropertyObject*>(clone.release());
    }
    void UseReferenceOf(PropertyObject& in)
    {
        reference = in.GetPtr<PropertyReference>(QStringLiteral("r"));
        ASSERT_NE(reference, nullptr);
    }
    const AbstractProperty* Expected(Found found) const
    {
        switch (found) {
        case Found::Target:
            return target;
        case Found::Replacement:
            return replacement;
        case Found::Clone:
            return clone;
        default:
            return nullptr;
        }
    }

    /// Both files are saved, closed, and opened again; all nodes are found anew.
    void Reload(const AbstractProperty** expected)
    {
        const QString place = *expected ? (*expected)->GetFullPath() : QString();
        const QString file = *expected ? (*expected)->GetDataFile()->GetPath() : QString();
        const QString holder = reference->GetFullPath();
        ASSERT_EQ(there->Save(), ER_SUCCESS);
        ASSERT_EQ(here->Save(), ER_SUCCESS);
        there.reset();
        here.reset();
        here = Open(herePath);
        reference = dynamic_cast<PropertyReference*>(Property::FindProperty(here->GetRoot(), holder));
        ASSERT_NE(reference, nullptr);
        static_cast<void>(reference->Resolve()); // opens the other file by itself
        there = Open(therePath);
        if (*expected)
            *expected = Property::FindProperty((file == herePath ? here : there)->GetRoot(), place);
    }

    ScratchFolder folder;
    QString herePath = folder.Path(QStringLiteral("here.h5"));
    QString therePath = folder.Path(QStringLiteral("there.h5"));
    std::unique_ptr<AbstractProperty> taken;
    std::shared_ptr<DataFile> here;
    std::shared_ptr<DataFile> there;
    DataFile* targetFile = nullptr;
    DataFile* otherFile = nullptr;
    PropertyReference* reference = nullptr;
    AbstractProperty* target = nullptr;
    const AbstractProperty* replacement = nullptr;
    const AbstractProperty* clone = nullptr;
};

constexpr Found no = Found::Nothing;
constexpr Found it = Found::Target;
constexpr Found other = Found::Replacement;
constexpr Found twin = Found::Clone;

const Event s_events[] = {
    {"Nothing", [](Scene&) {}, it, it, it},
    {"TargetRenamed", [](Scene& s) { s.target->SetName(QStringLiteral("u")); }, it, no, it},
    {"ItsFolderRenamed", [](Scene& s) { s.Folder("/all/data").SetName(QStringLiteral("u")); }, it, no, it},
    {"Moved", [](Scene& s) { s.MoveTarget(s.Folder("/far")); }, it, no, it},
    {"MovedDeeper",
     [](Scene& s) { s.MoveTarget(*AddFolder(s.Folder("/all/data/deep"), QStringLiteral("er"))); }, it, no,
     it},
    {"MovedUp", [](Scene& s) { s.MoveTarget(*s.targetFile->GetRoot()); }, it, no, it},
    {"MovedToTheReference", [](Scene& s) { s.MoveTarget(FolderAt(*s.here, "/all/holders/in")); }, it, no, it},
    {"MovedToTheOtherTree", [](Scene& s) { s.MoveTarget(FolderAt(*s.otherFile, "/far")); }, it, no, it},
    {"MovedAndReplaced",
     [](Scene& s) {
         s.MoveTarget(s.Folder("/far"));
         s.Replace();
     },
     it, other, it},
    {"MovedToTheOtherTreeAndReplaced",
     [](Scene& s) {
         s.MoveTarget(FolderAt(*s.otherFile, "/far"));
         s.Replace();
     },
     it, other, it},
    {"RemovedAlive",
     [](Scene& s) { s.taken.reset(s.Folder("/all/data/deep").TakeProperty(QStringLiteral("t"))); }, no, no,
     no},
    {"RemovedAliveAndReplaced",
     [](Scene& s) {
         s.taken.reset(s.Folder("/all/data/deep").TakeProperty(QStringLiteral("t")));
         s.Replace();
     },
     other, other, other},
    {"ItsFolderRemovedAlive",
     [](Scene& s) { s.taken.reset(s.Folder("/all").TakeProperty(QStringLiteral("data"))); }, no, no, no},
    {"RemovedAndPutElsewhere",
     [](Scene& s) {
         s.Folder("/all/data/deep").RemoveProperty(QStringLiteral("t"));
         s.target->SetName(QStringLiteral("u"));
         ASSERT_EQ(s.Folder("/far/away").InsertProperty(s.target), ER_SUCCESS);
     },
     it, no, it},
    {"Destroyed", [](Scene& s) { s.Folder("/all/data/deep").DeleteProperty(QStringLiteral("t")); }, no, no,
     no},
    {"ItsFolderDestroyed", [](Scene& s) { s.Folder("/all").DeleteProperty(QStringLiteral("data")); }, no, no,
     no},
    {"DestroyedAndReplaced",
     [](Scene& s) {
         s.Folder("/all/data/deep").DeleteProperty(QStringLiteral("t"));
         s.Replace();
     },
     other, other, other},
    {"RenamedAndReplaced",
     [](Scene& s) {
         s.target->SetName(QStringLiteral("u"));
         s.Replace();
     },
     it, other, it},
    {"RenamedDestroyedAndReplaced",
     [](Scene& s) {
         s.target->SetName(QStringLiteral("u"));
         s.Folder("/all/data/deep").DeleteProperty(QStringLiteral("u"));
         s.Replace(); // has the first name, which isn't the last known one
     },
     no, other, no},
    {"TargetCloned", [](Scene& s) { Scene::CloneInto(s.Folder("/all"), s.Folder("/all/data")); }, it, it, it},
    {"TargetClonedAndDestroyed",
     [](Scene& s) {
         Scene::CloneInto(s.Folder("/all"), s.Folder("/all/data"));
         s.Folder("/all").DeleteProperty(QStringLiteral("data"));
     },
     no, no, no},
    {"HolderCloned",
     [](Scene& s) {
         PropertyObject& all = FolderAt(*s.here, "/all");
         s.UseReferenceOf(Scene::CloneInto(all, FolderAt(*s.here, "/all/holders/in")));
     },
     it, it, no}, // a folder less lies on its way
    {"HolderClonedToItsSide",
     [](Scene& s) {
         PropertyObject& holders = FolderAt(*s.here, "/all/holders");
         s.UseReferenceOf(Scene::CloneInto(holders, FolderAt(*s.here, "/all/holders/in")));
     },
     it, it, it},
    {"CommonFolderCloned",
     [](Scene& s) {
         Scene::CloneInto(*s.here->GetRoot(), FolderAt(*s.here, "/all"));
         s.clone = Property::FindProperty(s.here->GetRoot(), QStringLiteral("/clone/data/deep/t"));
         s.UseReferenceOf(FolderAt(*s.here, "/clone/holders/in"));
     },
     it, it, twin},
};

using Case = std::tuple<TargetTree, int, bool, Holder>;

class FollowingReference : public ::testing::TestWithParam<Case>
{
};

// The reference tells a way that leads to what it stands for.
void ExpectToTellTheWayTo(const AbstractProperty& node, const PropertyReference& reference)
{
    if (node.GetRootProperty() == reference.GetRootProperty()) {
        EXPECT_EQ(reference.ReferenceFilePath(), QString());
        EXPECT_EQ(Property::FindProperty(&reference, reference.ReferencePath()), &node);
        return;
    }
    EXPECT_EQ(reference.ReferencePath(), node.GetFullPath());
    EXPECT_EQ(reference.ReferenceFilePath(), node.GetDataFile()->GetPath());
    EXPECT_EQ(reference.ReferenceFileType(), QStringLiteral("HDF5"));
    EXPECT_EQ(reference.ReferenceFile().uid, node.GetDataFile()->GetFileUid());
}

void MoveHolder(Scene& scene, Holder holder)
{
    PropertyObject* const folder = scene.reference->GetParent();
    if (holder == Holder::Renamed) {
        EXPECT_EQ(folder->SetName(QStringLiteral("renamed")), ER_SUCCESS);
        EXPECT_EQ(scene.reference->SetName(QStringLiteral("renamed")), ER_SUCCESS);
    } else if (holder == Holder::Moved) {
        EXPECT_EQ(folder->GetParent()->RemoveProperty(folder->GetName()), ER_SUCCESS);
        EXPECT_EQ(FolderAt(*scene.here, "/far/away").InsertProperty(folder), ER_SUCCESS);
    }
}

TEST_P(FollowingReference, StandsForWhatIsExpected)
{
    const auto [tree, number, isAsked, holder] = GetParam();
    const Event& event = s_events[number];
    Scene scene(tree);
    const LogCapture log;
    if (isAsked) {
        EXPECT_EQ(scene.reference->Resolve(), scene.target);
    }
    event.happen(scene);
    const Found found = tree == TargetTree::Same ? event.inOneTree : isAsked ? event.following : event.byPath;
    const AbstractProperty* expected = scene.Expected(found);
    if (holder == Holder::Reloaded)
        scene.Reload(&expected);
    else
        MoveHolder(scene, holder);

    EXPECT_EQ(scene.reference->Resolve(), expected);
    EXPECT_EQ(scene.reference->ResolveConst(), expected);
    EXPECT_EQ(expected == nullptr, found == Found::Nothing);
    if (expected)
        ExpectToTellTheWayTo(*expected, *scene.reference);
}

std::string NameOf(const ::testing::TestParamInfo<Case>& test)
{
    static const char* const s_holders[] = {"", "HolderRenamed", "HolderMoved", "Reloaded"};
    const auto [tree, number, isAsked, holder] = test.param;
    return std::string(tree == TargetTree::Same ? "InOneTree" : "ToAnotherFile") +
           (isAsked ? "Asked" : "NotAsked") + s_events[number].name + s_holders[static_cast<int>(holder)];
}

INSTANTIATE_TEST_SUITE_P(All, FollowingReference,
                         ::testing::Combine(::testing::Values(TargetTree::Same, TargetTree::OtherFile),
                                            ::testing::Range(0, static_cast<int>(std::size(s_events))),
                                            ::testing::Bool(),
                                            ::testing::Values(Holder::Untouched, Holder::Renamed,
                                                              Holder::Moved, Holder::Reloaded)),
                         &NameOf);

} // namespace
} // namespace Orrery::StorageTest
