#include "hosts/orrery/TreeAccess.h"

#include "foundations/property/PropertyReference.h"
#include "foundations/property/SimpleProperty.h"
#include "foundations/storage/DataFileFactory.h"
#include "hosts/orrery/Failure.h"
#include "tests/hosts/orrery/ScratchFolder.h"

#include <gtest/gtest.h>

namespace Orrery::Host {

namespace {

class TreeAccessTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        const QString path = QString::fromStdString(m_folder.path("f.h5"));
        ASSERT_GE(DataFileFactory::Instance().Open(path, DataFile::Create, &m_file), 0);
        m_dc1 = new PropertyObject("dc1");
        ASSERT_GE(m_file->GetRoot()->InsertProperty(m_dc1), 0);
        ASSERT_GE(m_dc1->SetProperty("v(a/b)", 5), 0);
    }

    // Adds a reference in the root.
    PropertyReference* refer(const QString& name, const AbstractProperty* target)
    {
        auto* const reference = new PropertyReference(name);
        EXPECT_GE(m_file->GetRoot()->InsertProperty(reference), 0);
        EXPECT_GE(reference->SetPropertyRef(target), 0);
        return reference;
    }

    std::string failure(const std::string& path)
    {
        try {
            findNode(*m_file, "f.h5", path);
        } catch (const Failure& failure) {
            return failure.what();
        }
        return "";
    }

    ScratchFolder m_folder;
    std::shared_ptr<DataFile> m_file;
    PropertyObject* m_dc1 = nullptr;
};

} // namespace

TEST_F(TreeAccessTest, InsertsANodeUnlessTheTreeRefusesIt)
{
    insertNode(m_dc1, std::make_unique<Variable>("new"));
    EXPECT_EQ(m_dc1->GetPropertyPtr("new")->GetFullPath(), "/dc1/new");
    try {
        insertNode(m_dc1, std::make_unique<PropertyObject>("new"));
        FAIL() << "a name that is taken was accepted";
    } catch (const Failure& failure) {
        EXPECT_STREQ(failure.what(), "'new' can't be put into the tree");
    }
    EXPECT_TRUE(m_dc1->GetPropertyPtr("new")->IsVariable());
}

TEST_F(TreeAccessTest, APathMayBeginWithASlash)
{
    EXPECT_EQ(findNode(*m_file, "f.h5", ""), m_file->GetRoot());
    EXPECT_EQ(findNode(*m_file, "f.h5", "/"), m_file->GetRoot());
    EXPECT_EQ(findNode(*m_file, "f.h5", "dc1"), m_dc1);
    EXPECT_EQ(findNode(*m_file, "f.h5", "/dc1/"), m_dc1);
    EXPECT_EQ(findNode(*m_file, "f.h5", "dc1/v(a%2Fb)"), m_dc1->GetPropertyPtr("v(a/b)"));
}

TEST_F(TreeAccessTest, ANameAsItIsListedLeadsToItsNode)
{
    for (const char* const name : {"a/b", "100%", "%41", "..", "tab\tand\x1b", "", "\xC2\xB5"}) {
        const QString text = QString::fromUtf8(name);
        ASSERT_GE(m_dc1->SetProperty(text, 1), 0);
        EXPECT_EQ(findNode(*m_file, "f.h5", "dc1/" + pathName(text)), m_dc1->GetPropertyPtr(text)) << name;
    }
}

TEST_F(TreeAccessTest, WhatIsNotThereIsAFailure)
{
    EXPECT_EQ(failure("dc2"), "f.h5: dc2: there is nothing of that name");
    EXPECT_EQ(failure("dc1/v(a/b)"), "f.h5: dc1/v(a/b): there is nothing of that name");
    EXPECT_EQ(failure("../.."), "f.h5: ../..: there is nothing of that name");
    EXPECT_EQ(failure("a\nb"), "f.h5: a\\nb: there is nothing of that name");
}

TEST_F(TreeAccessTest, AReferenceLeadsToItsTarget)
{
    const PropertyReference* const first = refer("first", m_dc1);
    refer("second", first);
    EXPECT_EQ(findNode(*m_file, "f.h5", "first"), m_dc1);
    EXPECT_EQ(findNode(*m_file, "f.h5", "second"), m_dc1);
}

TEST_F(TreeAccessTest, AReferenceThatLeadsNowhereIsAFailure)
{
    refer("lost", m_dc1);
    ASSERT_GE(m_file->GetRoot()->DeleteProperty("dc1"), 0);
    EXPECT_EQ(failure("lost"), "f.h5: lost: the reference leads nowhere: '../dc1'");

    PropertyReference* const round = refer("round", m_file->GetRoot());
    ASSERT_GE(round->SetPropertyRef(refer("back", round)), 0);
    EXPECT_EQ(failure("round"), "f.h5: round: the reference leads nowhere: '../back'");
}

TEST(FailureLine, NamesTheFileOnce)
{
    EXPECT_EQ(fileLine("a.h5", "a.h5: is empty"), "a.h5: is empty");
    EXPECT_EQ(fileLine("a.h5", "is empty"), "a.h5: is empty");
    EXPECT_EQ(fileLine("a.h5", "two\nlines"), "a.h5: two lines");
}

} // namespace Orrery::Host
