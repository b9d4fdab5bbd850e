// The structure of a tree comes back: flags, references, types, and the order in which objects are told that they
// are complete.
#include "tests/foundations/storage/CompareTrees.h"
#include "tests/foundations/storage/DataFiles.h"
#include "tests/support/CaseName.h"

#include "foundations/property/PropertyObjectFactory.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <stdexcept>

namespace Orrery::StorageTest {

using Brindle::Quay::BVariant;
using Brindle::Quay::DataOrdering;

namespace {

// A host's type whose objects write down what they find when they are told that their children are there.
class Witness : public PropertyObject
{
public:
    static QStringList s_story;

    static const QString& StaticType()
    {
        static const QString type = QStringLiteral("StorageTestWitness");
        return type;
    }
    const QString& PropertyObjType() const override { return StaticType(); }

    void OnDeserialization() override
    {
        s_story.append(GetFullPath() + QLatin1Char(' ') + QString::number(GetPropertyCount()));
        if (GetName() == QStringLiteral("throws"))
            throw std::runtime_error("this host doesn't like what it found");
        if (GetName() == QStringLiteral("throws a number"))
            throw 42;
    }
};

QStringList Witness::s_story;

// A host's type whose creator makes children of its own.
class Furnished : public PropertyObject
{
public:
    static PropertyObject* Make()
    {
        auto* const made = new Furnished;
        AddValue(*made, QStringLiteral("Mode"), BVariant(std::string("made")));
        AddFolder(*made, QStringLiteral("Parts"));
        AddValue(*made, QStringLiteral("Spare"), BVariant(1.0));
        return made;
    }
    static const QString& StaticType()
    {
        static const QString type = QStringLiteral("StorageTestFurnished");
        return type;
    }
    const QString& PropertyObjType() const override { return StaticType(); }
};

PropertyObject* MakeThrowing()
{
    throw std::runtime_error("this host makes no such thing today");
}

PropertyObject* MakeThrowingANumber()
{
    throw 42;
}

// Keeps a type name that nothing is registered for.
class Named : public PropertyObject
{
public:
    Named(const QString& name, const QString& type)
        : PropertyObject(name)
        , m_type(type)
    {
    }
    const QString& PropertyObjType() const override { return m_type; }

private:
    QString m_type;
};

PropertyObject* AddNamed(PropertyObject& parent, const QString& name, const QString& type)
{
    auto* const node = new Named(name, type);
    if (parent.InsertProperty(node) < 0)
        throw std::runtime_error("a node of the test tree can't be inserted");
    return node;
}

class TreeRoundTrip : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        PropertyObjectFactory& factory = PropertyObjectFactory::Instance();
        factory.RegisterType(Witness::StaticType(), [] { return static_cast<PropertyObject*>(new Witness); });
        factory.RegisterType(Furnished::StaticType(), &Furnished::Make);
        factory.RegisterType(QStringLiteral("StorageTestThrowing"), &MakeThrowing);
        factory.RegisterType(QStringLiteral("StorageTestThrowingANumber"), &MakeThrowingANumber);
    }

    // Saves a tree and lets go of it.
    QString Saved(const Builder& build)
    {
        const QString path = m_folder.Path(QStringLiteral("tree.h5"));
        SaveNew(path, build).reset();
        return path;
    }

    ScratchFolder m_folder;
};

} // namespace

TEST_F(TreeRoundTrip, KeepsAnEmptyTree)
{
    EXPECT_EQ(RoundTrip([](PropertyObject& /*root*/) {}), "");
}

TEST_F(TreeRoundTrip, KeepsAllFlagsOfEveryKindOfNode)
{
    EXPECT_EQ(RoundTrip([](PropertyObject& root) {
                  for (const unsigned int flags : {4U, 5U, 6U, 7U, 0xFFFFFFFFU, 0x80000004U}) {
                      const QString name = QString::number(flags, 16);
                      PropertyObject* const folder = AddFolder(root, name);
                      folder->SetPropertyFlags(flags);
                      AddValue(*folder, QStringLiteral("value"), BVariant(1))->SetPropertyFlags(flags);
                      AddReference(*folder, QStringLiteral("reference"), root)->SetPropertyFlags(flags);
                  }
              }),
              "");
}

TEST_F(TreeRoundTrip, KeepsTheFlagsOfTheRoot)
{
    const QString path = Saved([](PropertyObject& root) { root.SetPropertyFlags(7); });
    EXPECT_EQ(Open(path)->GetRoot()->GetPropertyFlags(), 7U);
}

TEST_F(TreeRoundTrip, LeavesOutWhatIsNotSerializableWithAllBelow)
{
    const QString path = Saved([](PropertyObject& root) {
        PropertyObject* const working = AddFolder(root, QStringLiteral("working"));
        AddValue(*working, QStringLiteral("below"), BVariant(std::vector<double>{1.0}));
        working->SetSerializable(false);
        AddValue(root, QStringLiteral("hidden"), BVariant(1.0))->SetPropertyFlags(PropertyFlagHidden);
        AddReference(root, QStringLiteral("reference"), *working)->SetSerializable(false);
        AddValue(root, QStringLiteral("kept"), BVariant(2.0));
    });
    const auto file = Open(path);
    EXPECT_EQ(file->GetRoot()->GetPropertyCount(), 1);
    EXPECT_TRUE(file->GetRoot()->HasProperty(QStringLiteral("kept")));
}

TEST_F(TreeRoundTrip, KeepsTheOrderingOfAScalar)
{
    EXPECT_EQ(RoundTrip([](PropertyObject& root) {
                  AddValue(root, QStringLiteral("number"), BVariant::scalar(1.5, DataOrdering::ColumnMajor));
                  AddValue(root, QStringLiteral("text"),
                           BVariant::scalar(std::string("t"), DataOrdering::ColumnMajor));
              }),
              "");
}

TEST_F(TreeRoundTrip, FindsTheTargetsOfReferencesAgain)
{
    const QString path = Saved([](PropertyObject& root) {
        PropertyObject* const far = AddFolder(*AddFolder(root, QStringLiteral("a/b")), QStringLiteral(".."));
        AbstractProperty* const target = AddValue(*far, QStringLiteral("target"), BVariant(7.0));
        PropertyObject* const here = AddFolder(root, QStringLiteral("here"));
        AddReference(*here, QStringLiteral("far"), *target);
        AddReference(*here, QStringLiteral("root"), root);
        AddReference(root, QStringLiteral("sibling"), *here);
    });
    const auto file = Open(path);
    PropertyObject& root = *file->GetRoot();
    auto* const here = root.GetPtr<PropertyObject>(QStringLiteral("here"));
    ASSERT_TRUE(here);
    const auto* const far = here->GetPtr<PropertyReference>(QStringLiteral("far"));
    ASSERT_TRUE(far);
    ASSERT_TRUE(far->Resolve());
    EXPECT_EQ(far->Resolve()->GetName(), QStringLiteral("target"));
    EXPECT_EQ(far->ReferenceFilePath(), QString());
    EXPECT_EQ(far->ReferenceFileType(), QString());
    EXPECT_EQ(here->GetPtr<PropertyReference>(QStringLiteral("root"))->Resolve(), &root);
    EXPECT_EQ(root.GetPtr<PropertyReference>(QStringLiteral("sibling"))->Resolve(), here);
}

TEST_F(TreeRoundTrip, KeepsReferencesThatLeadNowhere)
{
    EXPECT_EQ(RoundTrip([](PropertyObject& root) {
                  root.InsertProperty(new PropertyReference(QStringLiteral("unset")));
                  AbstractProperty* const gone = AddValue(root, QStringLiteral("gone"), BVariant(1.0));
                  AddReference(root, QStringLiteral("dangling"), *gone);
                  root.DeleteProperty(QStringLiteral("gone"));
              }),
              "");
    const QString path = Saved(
        [](PropertyObject& root) { root.InsertProperty(new PropertyReference(QStringLiteral("unset"))); });
    const auto file = Open(path);
    const auto* const unset = file->GetRoot()->GetPtr<PropertyReference>(QStringLiteral("unset"));
    ASSERT_TRUE(unset);
    EXPECT_EQ(unset->Resolve(), nullptr);
    EXPECT_EQ(unset->ReferencePath(), QString());
}

TEST_F(TreeRoundTrip, TellsAReferenceIntoAnotherFileByItsFile)
{
    const QString there = m_folder.Path(QStringLiteral("there.h5"));
    const auto target = SaveNew(there, [](PropertyObject& root) {
        AddValue(*AddFolder(root, QStringLiteral("f")), QStringLiteral("x"), BVariant(1.0));
    });
    auto* const f = target->GetRoot()->GetPtr<PropertyObject>(QStringLiteral("f"));
    const QString here = Saved([&](PropertyObject& root) {
        AddReference(root, QStringLiteral("out"), *f->GetPropertyPtr(QStringLiteral("x")));
    });
    const auto file = Open(here);
    const auto* const out = file->GetRoot()->GetPtr<PropertyReference>(QStringLiteral("out"));
    ASSERT_TRUE(out);
    EXPECT_EQ(out->ReferencePath(), QStringLiteral("/f/x"));
    EXPECT_EQ(out->ReferenceFilePath(), there);
    EXPECT_EQ(out->ReferenceFileType(), QStringLiteral("HDF5"));
}

// Files that belong together are moved together; what lay beside a file lies beside it afterwards.
TEST_F(TreeRoundTrip, PrefersTheFileBesideItselfForAReference)
{
    const QString there = m_folder.Path(QStringLiteral("there.h5"));
    auto target = SaveNew(there, [](PropertyObject& root) { AddFolder(root, QStringLiteral("f")); });
    const QString here = Saved([&](PropertyObject& root) {
        AddReference(root, QStringLiteral("out"), *target->GetRoot()->GetPropertyPtr(QStringLiteral("f")));
    });
    target.reset();
    const ScratchFolder elsewhere;
    const QString moved = elsewhere.Path(QStringLiteral("tree.h5"));
    const QString besideIt = elsewhere.Path(QStringLiteral("there.h5"));
    ASSERT_TRUE(QFile::copy(here, moved));
    const auto fileOf = [](const QString& path) {
        const auto file = Open(path);
        return file->GetRoot()->GetPtr<PropertyReference>(QStringLiteral("out"))->ReferenceFilePath();
    };
    EXPECT_EQ(fileOf(moved), there) << "only the old place has the file";
    ASSERT_TRUE(QFile::copy(there, besideIt));
    EXPECT_EQ(fileOf(moved), besideIt);
    ASSERT_TRUE(QFile::remove(besideIt));
    ASSERT_TRUE(QFile::remove(there));
    EXPECT_EQ(fileOf(moved), besideIt) << "neither place has the file";
}

TEST_F(TreeRoundTrip, KeepsAnUnknownTypeNameAndSavesItBack)
{
    const auto build = [](PropertyObject& root) {
        PropertyObject* const stranger =
            AddNamed(root, QStringLiteral("s"), QStringLiteral("TypeOfAnotherHost"));
        AddValue(*AddNamed(*stranger, QStringLiteral("inner"), QStringLiteral("Another")),
                 QStringLiteral("v"), BVariant(1.0));
    };
    EXPECT_EQ(RoundTrip(build), "");

    const QString path = Saved(build);
    {
        const auto file = Open(path, DataFile::ReadWrite);
        ASSERT_EQ(file->Save(), ER_SUCCESS);
    }
    const auto again = Open(path);
    DataFile::RootProperty original(nullptr);
    build(original);
    EXPECT_EQ(CompareTrees(original, *again->GetRoot()), "");
}

TEST_F(TreeRoundTrip, MakesObjectsOfRegisteredTypes)
{
    const QString path =
        Saved([](PropertyObject& root) { AddNamed(root, QStringLiteral("w"), Witness::StaticType()); });
    const auto file = Open(path);
    EXPECT_TRUE(file->GetRoot()->GetPtr<Witness>(QStringLiteral("w")));
}

TEST_F(TreeRoundTrip, PutsSavedChildrenInPlaceOfThoseThatTheCreatorMade)
{
    const QString path = Saved([](PropertyObject& root) {
        PropertyObject* const saved = AddNamed(root, QStringLiteral("f"), Furnished::StaticType());
        AddValue(*saved, QStringLiteral("Mode"), BVariant(std::string("saved")));
        AddValue(*saved, QStringLiteral("Parts"), BVariant(3.0)); // a value where the creator makes a folder
    });
    const auto file = Open(path);
    auto* const f = file->GetRoot()->GetPtr<Furnished>(QStringLiteral("f"));
    ASSERT_TRUE(f);
    EXPECT_EQ(f->GetPropertyCount(), 3);
    EXPECT_EQ(CompareValues(BVariant(std::string("saved")), ValueOf(*f, QStringLiteral("Mode"))), "");
    EXPECT_EQ(CompareValues(BVariant(3.0), ValueOf(*f, QStringLiteral("Parts"))), "");
    EXPECT_EQ(CompareValues(BVariant(1.0), ValueOf(*f, QStringLiteral("Spare"))), "")
        << "not in the file: kept";
}

TEST_F(TreeRoundTrip, TellsInnerObjectsFirstAndEachWithAllItsChildren)
{
    const QString path = Saved([](PropertyObject& root) {
        PropertyObject* const a = AddNamed(root, QStringLiteral("a"), Witness::StaticType());
        AddNamed(*a, QStringLiteral("inner"), Witness::StaticType());
        AddValue(*a, QStringLiteral("v"), BVariant(1.0));
        PropertyObject* const plain = AddFolder(root, QStringLiteral("b"));
        PropertyObject* const deep = AddNamed(*plain, QStringLiteral("deep"), Witness::StaticType());
        AddValue(*deep, QStringLiteral("array"), BVariant(std::vector<double>{1.0}));
        AddReference(*deep, QStringLiteral("r"), *a);
        AddNamed(root, QStringLiteral("c"), Witness::StaticType());
    });
    Witness::s_story.clear();
    const auto file = Open(path);
    EXPECT_EQ(Witness::s_story, (QStringList{QStringLiteral("/a/inner 0"), QStringLiteral("/a 2"),
                                             QStringLiteral("/b/deep 2"), QStringLiteral("/c 0")}));
}

struct ThrowCase
{
    const char* name;
    QString node;
    QString type;
    QString said;
};

class TreeRoundTripThrow : public TreeRoundTrip, public ::testing::WithParamInterface<ThrowCase>
{
};

TEST_P(TreeRoundTripThrow, RefusesTheFileAndNamesTheNode)
{
    const QString path = Saved([](PropertyObject& root) {
        PropertyObject* const folder = AddFolder(root, QStringLiteral("folder"));
        AddNamed(*folder, GetParam().node, GetParam().type);
    });
    const LogCapture log;
    const Outcome opened = TryOpen(path);
    EXPECT_EQ(opened.code, ER_FAILED);
    EXPECT_FALSE(opened.file);
    EXPECT_TRUE(IsOneLineAbout(opened.why, path)) << opened.why.toStdString();
    EXPECT_TRUE(opened.why.contains(QStringLiteral("/folder/") + GetParam().node))
        << opened.why.toStdString();
    EXPECT_TRUE(opened.why.contains(GetParam().said)) << opened.why.toStdString();
    EXPECT_EQ(log.Warnings(), QStringList{opened.why});
    EXPECT_FALSE(DataFileFactory::Instance().FindOpen(path));
}

INSTANTIATE_TEST_SUITE_P(
    Hosts, TreeRoundTripThrow,
    ::testing::Values(ThrowCase{"OnDeserialization", QStringLiteral("throws"), Witness::StaticType(),
                                QStringLiteral("this host doesn't like what it found")},
                      ThrowCase{"OnDeserializationNoException", QStringLiteral("throws a number"),
                                Witness::StaticType(), QStringLiteral("unknown exception")},
                      ThrowCase{"Creator", QStringLiteral("made"), QStringLiteral("StorageTestThrowing"),
                                QStringLiteral("this host makes no such thing today")},
                      ThrowCase{"CreatorNoException", QStringLiteral("made"),
                                QStringLiteral("StorageTestThrowingANumber"),
                                QStringLiteral("unknown exception")}),
    TestSupport::CaseName());

TEST_F(TreeRoundTrip, SaysInOneLineWhatIsWrongWithANodeWhoseNameHasSeveral)
{
    const QString path = Saved([](PropertyObject& root) {
        PropertyObject* const folder = AddFolder(root, QStringLiteral("first line\nsecond line\r"));
        AddNamed(*folder, QStringLiteral("throws"), Witness::StaticType());
    });
    const LogCapture log;
    const Outcome opened = TryOpen(path);
    EXPECT_EQ(opened.code, ER_FAILED);
    EXPECT_TRUE(IsOneLineAbout(opened.why, path)) << opened.why.toStdString();
}

TEST_F(TreeRoundTrip, KeepsTheDeepestTreeThatThereCanBe)
{
    EXPECT_EQ(RoundTrip([](PropertyObject& root) {
                  PropertyObject* folder = &root;
                  for (int depth = 1; depth < PropertyObject::MaxDepth; ++depth)
                      folder = AddFolder(*folder, QString::number(depth));
                  AddValue(*folder, QStringLiteral("scalar"), BVariant(1.0));
                  AddValue(*folder, QStringLiteral("array"), BVariant(std::vector<double>{1.0, 2.0}));
                  AddReference(*folder, QStringLiteral("reference"), root);
              }),
              "");
}

TEST_F(TreeRoundTrip, KeepsAHundredThousandNumberedChildren)
{
    EXPECT_EQ(RoundTrip([](PropertyObject& root) {
                  PropertyObject* const members = AddFolder(root, QStringLiteral("members"));
                  for (int i = 0; i < 100'000; ++i)
                      AddValue(*members, QString::number(i), BVariant(i));
              }),
              "");
}

TEST_F(TreeRoundTrip, KeepsManyFoldersWithArrays)
{
    EXPECT_EQ(
        RoundTrip([](PropertyObject& root) {
            for (int i = 0; i < 1000; ++i) {
                PropertyObject* const folder = AddFolder(root, QString::number(i));
                AddValue(*folder, QStringLiteral("Data"), BVariant(std::vector<double>{1.0 * i, 2.0 * i}));
                AddValue(*folder, QStringLiteral("Unit"), BVariant(std::string("V")));
            }
        }),
        "");
}

TEST_F(TreeRoundTrip, GivesTheSameBytesForTheSameTreeSavedAgain)
{
    const QString path = Saved([](PropertyObject& root) {
        AddValue(*AddFolder(root, QStringLiteral("f")), QStringLiteral("v"),
                 BVariant(std::vector<double>(100, 1.5)));
        AddValue(root, QStringLiteral("t"), BVariant(std::string("text")));
    });
    const QByteArray first = ReadFile(path);
    const auto file = Open(path, DataFile::ReadWrite);
    ASSERT_EQ(file->Save(), ER_SUCCESS);
    EXPECT_TRUE(ReadFile(path) == first);
}

TEST_F(TreeRoundTrip, RefusesToSaveANodeOfNoKnownKind)
{
    class Bare : public AbstractProperty
    {
    public:
        explicit Bare(const QString& name)
            : AbstractProperty(name)
        {
        }
        AbstractProperty* DoClone() const override { return new Bare(GetName()); }
    };
    const QString path = m_folder.Path(QStringLiteral("tree.h5"));
    const auto file = Open(path, DataFile::Create);
    ASSERT_EQ(
        AddFolder(*file->GetRoot(), QStringLiteral("f"))->InsertProperty(new Bare(QStringLiteral("bare"))),
        ER_SUCCESS);
    const Outcome saved = TrySave(*file);
    EXPECT_EQ(saved.code, ER_FAILED);
    EXPECT_TRUE(IsOneLineAbout(saved.why, path)) << saved.why.toStdString();
    EXPECT_TRUE(saved.why.contains(QStringLiteral("/f/bare"))) << saved.why.toStdString();
}

// A host's reference that stands for a living node and can't tell where that is.
TEST_F(TreeRoundTrip, SavesAReferenceThatCannotTellItsPathAsUnsetAndWarns)
{
    class Silent : public PropertyReference
    {
    public:
        using PropertyReference::PropertyReference;
        QString ReferencePath() const override { return QString(); }
    };
    const QString path = m_folder.Path(QStringLiteral("tree.h5"));
    {
        const LogCapture log;
        SaveNew(path, [](PropertyObject& root) {
            auto* const reference = new Silent(QStringLiteral("silent"));
            ASSERT_EQ(root.InsertProperty(reference), ER_SUCCESS);
            ASSERT_EQ(reference->SetPropertyRef(&root), ER_SUCCESS);
        });
        EXPECT_EQ(log.Warnings(), QStringList{QStringLiteral(
                                      "reference /silent can't tell its path and is saved as unresolved")});
    }
    const auto file = Open(path);
    const auto* const silent = file->GetRoot()->GetPtr<PropertyReference>(QStringLiteral("silent"));
    ASSERT_TRUE(silent);
    EXPECT_EQ(silent->Resolve(), nullptr);
}

} // namespace Orrery::StorageTest
