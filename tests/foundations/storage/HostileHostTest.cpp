// What a host's own classes and careless calls do to a load or a save, and what must come of it.
#include "foundations/property/ErrorResult.h"
#include "foundations/property/PropertyObjectFactory.h"
#include "tests/foundations/storage/DataFiles.h"

#include <QFile>

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <type_traits>

namespace Orrery::StorageTest {
namespace {

const QString s_deletesParent = QStringLiteral("HostileHostDeletesParent");
const QString s_lies = QStringLiteral("HostileHostLies");
const QString s_letsGo = QStringLiteral("HostileHostLetsGo");
const QString s_refuses = QStringLiteral("HostileHostRefuses");

/// A folder of a type name of its own.
class TypedFolder : public PropertyObject
{
public:
    TypedFolder(const QString& name, const QString& type)
        : PropertyObject(name)
        , m_type(type)
    {
    }
    const QString& PropertyObjType() const override { return m_type; }

private:
    const QString& m_type;
};

class DeletesParent : public TypedFolder
{
public:
    DeletesParent()
        : TypedFolder(QString(), s_deletesParent)
    {
    }
    void OnDeserialization() override
    {
        PropertyObject* const parent = GetParent();
        parent->GetParent()->DeleteProperty(parent->GetName());
    }
};

class Refuses : public TypedFolder
{
public:
    Refuses()
        : TypedFolder(QString(), s_refuses)
    {
    }
    void OnDeserialization() override { throw OrreryException(ER_ALREADY_EXISTS); }
};

/// Lets go of what may be the last share of the file that it is loaded from.
class LetsGo : public TypedFolder
{
public:
    LetsGo()
        : TypedFolder(QString(), s_letsGo)
    {
    }
    void OnDeserialization() override
    {
        if (s_share)
            s_share->reset();
    }

    static std::shared_ptr<DataFile>* s_share;
};

std::shared_ptr<DataFile>* LetsGo::s_share = nullptr;

/// A folder that claims to be a leaf.
class Lies : public PropertyObject
{
public:
    explicit Lies(const QString& name)
        : PropertyObject(name)
    {
    }
    unsigned int GetTypeFlags() const override { return PropertyTypeFlagSimple; }
};

template <class T>
PropertyObject* Make()
{
    return new T;
}

void RegisterTypes()
{
    PropertyObjectFactory::Instance().RegisterType(s_letsGo, &Make<LetsGo>);
    PropertyObjectFactory::Instance().RegisterType(s_deletesParent, &Make<DeletesParent>);
    PropertyObjectFactory::Instance().RegisterType(s_refuses, &Make<Refuses>);
}

class HostileHost : public ::testing::Test
{
protected:
    HostileHost() { RegisterTypes(); }

    ScratchFolder m_folder;
    QString m_path = m_folder.Path(QStringLiteral("tree.h5"));
};

static_assert(!std::is_copy_constructible_v<DataFile::RootProperty>, "a copy would outlive its file");

TEST_F(HostileHost, AnObjectThatDestroysItsFolderWhileItIsLoadedRefusesTheFile)
{
    SaveNew(m_path, [](PropertyObject& root) {
        PropertyObject* const folder = AddFolder(root, QStringLiteral("folder"));
        ASSERT_GE(folder->InsertProperty(new TypedFolder(QStringLiteral("a"), s_deletesParent)), 0);
        AddFolder(*folder, QStringLiteral("b"));
    });
    const LogCapture log;
    const Outcome opened = TryOpen(m_path);
    EXPECT_EQ(opened.code, ER_FAILED);
    EXPECT_TRUE(opened.why.contains(QStringLiteral("/folder/b: its folder was destroyed")))
        << qPrintable(opened.why);
}

TEST_F(HostileHost, AFileWhoseLastShareGoesWhileItIsLoadedLivesUntilTheLoadIsDone)
{
    SaveNew(m_path, [](PropertyObject& root) {
        ASSERT_GE(root.InsertProperty(new TypedFolder(QStringLiteral("a"), s_letsGo)), 0);
    });
    std::shared_ptr<DataFile> file;
    ASSERT_GE(DataFileFactory::Instance().Open(m_path, DataFile::ReadWrite, &file), 0);
    const std::weak_ptr<DataFile> watched = file;
    DataFile* const loading = file.get();
    LetsGo::s_share = &file;
    const ERESULT code = loading->Load();
    LetsGo::s_share = nullptr;
    EXPECT_GE(code, 0);
    EXPECT_TRUE(watched.expired());
}

TEST_F(HostileHost, TheCodeOfAnObjectThatRefusesItsChildrenComesOut)
{
    SaveNew(m_path, [](PropertyObject& root) {
        ASSERT_GE(root.InsertProperty(new TypedFolder(QStringLiteral("a"), s_refuses)), 0);
    });
    const LogCapture log;
    const Outcome opened = TryOpen(m_path);
    EXPECT_EQ(opened.code, ER_ALREADY_EXISTS);
    EXPECT_TRUE(opened.why.contains(QStringLiteral("/a: "))) << qPrintable(opened.why);
}

TEST_F(HostileHost, AFolderThatClaimsToBeALeafIsSavedAsTheFolderThatItIs)
{
    SaveNew(m_path, [](PropertyObject& root) {
        auto* const liar = new Lies(QStringLiteral("liar"));
        ASSERT_GE(root.InsertProperty(liar), 0);
        AddValue(*liar, QStringLiteral("value"), Brindle::Quay::BVariant(1.5));
    });
    const auto file = Open(m_path);
    const auto* const loaded = file->GetRoot()->GetPtr<PropertyObject>(QStringLiteral("liar"));
    ASSERT_NE(loaded, nullptr);
    EXPECT_TRUE(loaded->HasProperty(QStringLiteral("value")));
}

TEST_F(HostileHost, AReadOnlyFileIsNeverSavedOverItsOwnPathEvenWhenANewerOneHasComeThere)
{
    SaveNew(m_path, [](PropertyObject& root) { AddFolder(root, QStringLiteral("old")); });
    const auto old = Open(m_path);
    const QString other = m_folder.Path(QStringLiteral("other.h5"));
    SaveNew(other, [](PropertyObject& root) { AddFolder(root, QStringLiteral("new")); });
    ASSERT_TRUE(QFile::remove(m_path));
    ASSERT_TRUE(QFile::rename(other, m_path));
    Open(m_path).reset();

    QString why;
    EXPECT_EQ(old->SaveAs(m_path, &why), ER_FAILED);
    EXPECT_TRUE(why.contains(QStringLiteral("read-only"))) << qPrintable(why);
    EXPECT_TRUE(Open(m_path)->GetRoot()->HasProperty(QStringLiteral("new")));
}

TEST_F(HostileHost, ALoadedReferenceFollowsATargetThatIsRenamedBeforeAnybodyAsks)
{
    SaveNew(m_path, [](PropertyObject& root) {
        PropertyObject* const target = AddFolder(root, QStringLiteral("target"));
        ASSERT_GE(root.SetPropertyRef(QStringLiteral("reference"), target), 0);
    });
    const auto file = Open(m_path, DataFile::ReadWrite);
    DataFile::RootProperty* const root = file->GetRoot();
    AbstractProperty* const target = root->GetPropertyPtr(QStringLiteral("target"));
    ASSERT_GE(target->SetName(QStringLiteral("renamed")), 0);
    const auto* const reference = root->GetPtr<PropertyReference>(QStringLiteral("reference"));
    ASSERT_NE(reference, nullptr);
    EXPECT_EQ(reference->Resolve(), target);
    EXPECT_EQ(reference->ReferencePath(), QStringLiteral("../renamed"));
}

TEST_F(HostileHost, AReasonIsOneLineWhateverThePathHolds)
{
    const LogCapture log;
    const Outcome missing = TryOpen(m_folder.Path(QStringLiteral("two\nlines.h5")));
    EXPECT_EQ(missing.code, ER_NOT_FOUND);
    EXPECT_FALSE(missing.why.contains(QLatin1Char('\n')));
    EXPECT_TRUE(missing.why.contains(QStringLiteral("two\\x0alines.h5"))) << qPrintable(missing.why);

    QString why;
    std::shared_ptr<DataFile> file;
    EXPECT_EQ(
        DataFileFactory::Instance().Open(m_path, DataFile::ReadOnly, &file, &why, QStringLiteral("a\nb")),
        ER_INVALID_ARGUMENT);
    EXPECT_FALSE(why.contains(QLatin1Char('\n')));
}

} // namespace
} // namespace Orrery::StorageTest
