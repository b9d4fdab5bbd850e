#include "hosts/orrery/TreeComparison.h"

#include "foundations/property/PropertyReference.h"
#include "foundations/property/SimpleProperty.h"
#include "foundations/storage/DataFileFactory.h"
#include "hosts/orrery/Failure.h"
#include "hosts/orrery/TreeAccess.h"
#include "tests/hosts/orrery/ScratchFolder.h"
#include "units/Units.h"
#include "variables/ConcatVar.h"
#include "variables/ExplicitDataVar.h"
#include "variables/RangeVar.h"

#include <gmock/gmock.h>

#include <memory>

namespace Orrery::Host {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

template <class Node>
Node* add(PropertyObject* folder, Node* node)
{
    EXPECT_GE(folder->InsertProperty(node), 0);
    return node;
}

ExplicitDataVar* addVariable(PropertyObject* folder, const QString& name, const BVariant& data)
{
    auto* const variable = new ExplicitDataVar(name);
    variable->UpdateData(data);
    return add(folder, variable);
}

/// A folder "run" with two variables, one of which is measured against the other.
std::unique_ptr<PropertyObject> makeTree()
{
    auto root = std::make_unique<PropertyObject>();
    auto* const run = add(root.get(), new PropertyObject("run"));
    auto* const axis = addVariable(run, "t", BVariant(std::vector<double>{0, 1, 2}));
    auto* const data = addVariable(run, "v", BVariant(std::vector<double>{5, 6, 7}));
    EXPECT_GE(data->AddIndepVariableRef(axis), 0);
    EXPECT_GE(data->SetUnits(Units::FromSIString("V")), 0);
    return root;
}

PropertyObject* runOf(PropertyObject& root)
{
    return root.GetPtr<PropertyObject>("run");
}

std::vector<std::string> differences(PropertyObject& a, PropertyObject& b,
                                     const ComparisonOptions& options = {})
{
    std::vector<std::string> lines;
    compareTrees({&a, "A"}, {&b, "B"}, options, [&](const Difference& difference) {
        lines.push_back(difference.path + ": " + difference.what);
    });
    return lines;
}

class TreeComparison : public ::testing::Test
{
protected:
    std::vector<std::string> found(const ComparisonOptions& options = {})
    {
        return differences(*a, *b, options);
    }

    std::unique_ptr<PropertyObject> a = makeTree();
    std::unique_ptr<PropertyObject> b = makeTree();
};

} // namespace

TEST_F(TreeComparison, OfTheSameFindsNothing)
{
    EXPECT_THAT(found(), IsEmpty());
    EXPECT_THAT(differences(*a, *a), IsEmpty());
}

TEST_F(TreeComparison, TellsAChangedElementAtItsPath)
{
    runOf(*b)->GetPtr<ExplicitDataVar>("v")->UpdateData(BVariant(std::vector<double>{5, 6, 8}));
    EXPECT_THAT(
        found(),
        ElementsAre("/run/v/Data: 1 of 3 values differs: at 2, 7 and 8; largest relative difference 0.125"));
    EXPECT_THAT(found({0.2, false}), IsEmpty());
}

TEST_F(TreeComparison, TellsWhatIsMissingOnEitherSide)
{
    addVariable(runOf(*a), "w", BVariant(1.0));
    EXPECT_THAT(found(), ElementsAre("/run/w: only in A"));
    addVariable(runOf(*b), "x", BVariant(2.0));
    EXPECT_THAT(found(), ElementsAre("/run/w: only in A", "/run/x: only in B"));
}

TEST_F(TreeComparison, TellsARenamedChildAndTheReferencesThatFollowIt)
{
    ASSERT_GE(runOf(*b)->GetPropertyPtr("t")->SetName("time\n"), 0);
    EXPECT_THAT(found(), ElementsAre("/run/v/Indep/0: refers to ../../../t and ../../../time\\n",
                                     "/run/t: is named 'time\\n' in B"));
}

TEST_F(TreeComparison, PairsEachRenamedChildWithOneOther)
{
    for (const char* const name : {"p", "q"})
        addVariable(runOf(*a), name, BVariant(1.0));
    for (const char* const name : {"r", "s", "u"})
        addVariable(runOf(*b), name, BVariant(1.0));
    EXPECT_THAT(found(),
                ElementsAre("/run/p: is named 'r' in B", "/run/q: is named 's' in B", "/run/u: only in B"));
}

TEST_F(TreeComparison, TellsKindsOfNodes)
{
    ASSERT_GE(a->SetProperty("n", 1), 0);
    add(b.get(), new PropertyObject("n"));
    add(a.get(), new PropertyObject("m"));
    addVariable(b.get(), "m", BVariant(1.0));
    EXPECT_THAT(found(), ElementsAre("/m: kind folder and variable", "/n: kind value and folder"));
}

TEST_F(TreeComparison, TellsTypeNamesUnlessTheyAreIgnored)
{
    add(a.get(), new Variable("n"));
    add(b.get(), new ExplicitDataVar("n"));
    ASSERT_GE(b->GetPtr<Variable>("n")->UpdateData(BVariant()).GetPropertyCount(), 0);
    EXPECT_THAT(found(), ::testing::Contains("/n: type Variable and ExplVar"));
    EXPECT_THAT(found({std::nullopt, true}), ::testing::Not(::testing::Contains(HasSubstr("type"))));
}

TEST_F(TreeComparison, TellsFlagsAndCellArrays)
{
    b->GetPropertyPtr("run")->SetPropertyFlags(PropertyFlagHidden | 64);
    auto* const data = dynamic_cast<SimpleProperty*>(
        b->GetPtr<PropertyObject>("run")->GetPtr<PropertyObject>("v")->GetPropertyPtr("Data"));
    ASSERT_TRUE(data);
    data->SetValue(data->GetValue(), IsCellArrayTrue);
    EXPECT_THAT(found(),
                ElementsAre("/run: flags --s and -h-+64", "/run/v/Data: ordinary array and cell array"));
}

TEST_F(TreeComparison, TellsUnitsInAPersonsWordsToo)
{
    ASSERT_GE(runOf(*b)->GetPtr<Variable>("v")->SetUnits(Units::FromSIString("mV")), 0);
    const std::vector<std::string> lines = found();
    EXPECT_THAT(lines, ::testing::Contains("/run/v/Unit: units V and mV"));
    for (const std::string& line : lines)
        EXPECT_THAT(line, ::testing::StartsWith("/run/v/Unit"));
}

TEST_F(TreeComparison, TellsWhereReferencesLead)
{
    for (PropertyObject* const root : {a.get(), b.get()})
        add(root, new PropertyReference("r"));
    a->GetPtr<PropertyReference>("r")->RestorePath("../run");
    EXPECT_THAT(found(), ElementsAre("/r: refers to ../run and nothing"));
    b->GetPtr<PropertyReference>("r")->RestorePath("/run", "/elsewhere/other.h5", "HDF5");
    EXPECT_THAT(found(), ElementsAre("/r: refers to ../run and /elsewhere/other.h5:/run",
                                     "/r: refers to a file of the type '' and 'HDF5'"));
    a->GetPtr<PropertyReference>("r")->RestorePath("/run", "/elsewhere/third.h5", "HDF5");
    EXPECT_THAT(found(), ElementsAre("/r: refers to /elsewhere/third.h5:/run and /elsewhere/other.h5:/run"));
}

TEST_F(TreeComparison, NeverComputesAVariable)
{
    for (PropertyObject* const root : {a.get(), b.get()}) {
        auto* const range = add(root, new RangeVar("range"));
        range->SetStart(BVariant(0.0));
        range->SetCount(BVariant(1e11));
        auto* const loop = add(root, new ConcatVar("loop"));
        ASSERT_GE(loop->AddVariable(loop), 0);
        ASSERT_GE(loop->AddVariable(range), 0);
    }
    EXPECT_THAT(found(), IsEmpty());
    b->GetPtr<RangeVar>("range")->SetStep(BVariant(2.0));
    EXPECT_THAT(found(), ElementsAre("/range/Step: only in B"));
}

TEST_F(TreeComparison, IsTheSameForSavedTrees)
{
    const ScratchFolder folder;
    std::shared_ptr<DataFile> file;
    ASSERT_GE(DataFileFactory::Instance().Open(folder.path("t.h5").c_str(), DataFile::Create, &file), 0);
    ASSERT_GE(file->GetRoot()->InsertProperty(a->TakeProperty("run")), 0);
    ASSERT_GE(file->Save(), 0);
    file.reset();
    const std::shared_ptr<DataFile> reloaded = openForReading(folder.path("t.h5"));
    EXPECT_THAT(differences(*runOf(*reloaded->GetRoot()), *runOf(*b)), IsEmpty());
}

TEST_F(TreeComparison, GivesUpNamesInFoldersWithNothingInCommon)
{
    for (int i = 0; i < 1500; ++i) {
        ASSERT_GE(a->SetProperty(QString("a%1").arg(i), i), 0);
        ASSERT_GE(b->SetProperty(QString("b%1").arg(i), -1 - i), 0);
    }
    EXPECT_EQ(found().size(), 3000U);
}

} // namespace Orrery::Host
