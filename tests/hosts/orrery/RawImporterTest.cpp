#include "hosts/orrery/RawImporter.h"

#include "foundations/property/SimpleProperty.h"
#include "foundations/variant/VariantOperations.h"
#include "hosts/orrery/Failure.h"
#include "hosts/orrery/UnitText.h"
#include "results/ParameterizedResultData.h"
#include "variables/ExplicitDataVar.h"

#include <gtest/gtest.h>

#include <string>

namespace Orrery::Host {

namespace {

RawPlot plotNamed(const QString& name)
{
    RawPlot plot;
    plot.name = name;
    return plot;
}

QString textOf(PropertyObject* folder, const QString& name)
{
    QString text;
    EXPECT_GE(folder->GetProperty(name, &text), 0) << name.toStdString();
    return text;
}

} // namespace

struct FolderCase
{
    const char* plotName;
    const char* folder;
};

class FolderNames : public ::testing::TestWithParam<FolderCase>
{
};

TEST_P(FolderNames, TellTheKindOfRun)
{
    Result root;
    RawImporter importer(&root);
    EXPECT_EQ(importer.add(plotNamed(QString::fromUtf8(GetParam().plotName)))->GetName().toStdString(),
              GetParam().folder);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, FolderNames,
    ::testing::Values(FolderCase{"DC transfer characteristic", "dc1"}, FolderCase{"AC Analysis", "ac1"},
                      FolderCase{"Transient Analysis", "tran1"}, FolderCase{"Operating Point", "op1"},
                      FolderCase{"Noise Spectral Density Curves", "noise1"},
                      FolderCase{"Integrated Noise", "noise-total1"}, FolderCase{"constants", "const1"},
                      FolderCase{"My  own (2nd) run!", "my-own-2nd-run1"}, FolderCase{"run 2", "run-2-1"},
                      FolderCase{"\xC3\x9C"
                                 "bertragung",
                                 "\xC3\xBC"
                                 "bertragung1"},
                      FolderCase{"", "plot1"}, FolderCase{"?!", "plot1"}),
    [](const auto& row) { return std::to_string(row.index); });

TEST(FolderNumbers, CountEachKindFromOne)
{
    Result root;
    RawImporter importer(&root);
    QStringList names;
    for (const char* const plot :
         {"DC transfer characteristic", "AC Analysis", "DC transfer characteristic", "run 2"})
        names += importer.add(plotNamed(plot))->GetName();
    EXPECT_EQ(names, (QStringList{"dc1", "ac1", "dc2", "run-2-1"}));
    EXPECT_EQ(root.GetResultDataList().size(), 4);
}

TEST(FolderNumbers, PassOverWhatTheTreeHas)
{
    Result root;
    ASSERT_GE(root.SetProperty("dc1", 5), 0);
    EXPECT_EQ(RawImporter(&root).add(plotNamed("DC transfer characteristic"))->GetName(), "dc2");
}

TEST(PlotTexts, AreValuesOfAHiddenFolderOfTheSetup)
{
    RawPlot plot = plotNamed("AC Analysis");
    plot.title = "T";
    plot.date = "D";
    plot.flags = "complex";
    plot.commands = QStringList{"one"};
    plot.options = QStringList{"a = 1", "b = 2"};
    Result root;
    EXPECT_EQ(RawImporter(&root).add(plot)->GetPropertyCount(), 0);
    PropertyObject* const folder = root.GetOrCreateSetupInfoFolder()->GetPtr<PropertyObject>("ac1");
    ASSERT_NE(folder, nullptr);
    EXPECT_TRUE(folder->IsHidden());
    EXPECT_TRUE(folder->IsSerializable());
    EXPECT_EQ(textOf(folder, "Title"), "T");
    EXPECT_EQ(textOf(folder, "Date"), "D");
    EXPECT_EQ(textOf(folder, "Plotname"), "AC Analysis");
    EXPECT_EQ(textOf(folder, "Flags"), "complex");
    EXPECT_EQ(textOf(folder, "Command"), "one");
    const auto* const options = dynamic_cast<SimpleProperty*>(folder->GetPropertyPtr("Option"));
    ASSERT_NE(options, nullptr);
    EXPECT_TRUE(exactlyEqual(options->GetValue(), BVariant(std::vector<std::string>{"a = 1", "b = 2"})));
}

TEST(PlotTexts, AreLeftOutWhereTheFileHasNoSuchLines)
{
    Result root;
    RawImporter(&root).add(plotNamed("AC Analysis"));
    PropertyObject* const folder = root.GetOrCreateSetupInfoFolder()->GetPtr<PropertyObject>("ac1");
    EXPECT_FALSE(folder->HasProperty("Command"));
    EXPECT_FALSE(folder->HasProperty("Option"));
}

TEST(Application, IsWhatTheFirstCommandLineSays)
{
    const auto applicationOf = [](const QStringList& commands) {
        RawPlot plot = plotNamed("AC Analysis");
        plot.commands = commands;
        Result root;
        RawImporter importer(&root);
        importer.add(plot);
        importer.add(plotNamed("AC Analysis"));
        return textOf(&root, Result::ApplicationID());
    };
    EXPECT_EQ(applicationOf({}), "SPICE");
    EXPECT_EQ(applicationOf({"version 42", "other"}), "SPICE version 42");
    EXPECT_EQ(applicationOf({"Some simulator 7"}), "Some simulator 7");
}

TEST(PlotVectors, BecomeExplicitVariablesThatShareTheirData)
{
    RawPlot plot = plotNamed("AC Analysis");
    const BVariant data(std::vector<double>{1, 2, 3});
    plot.vectors = {{"v(a/b)", "voltage", data}};
    Result root;
    ResultData* const folder = RawImporter(&root).add(plot);
    const auto* const variable = dynamic_cast<ExplicitDataVar*>(folder->GetPropertyPtr("v(a/b)"));
    ASSERT_NE(variable, nullptr);
    EXPECT_EQ(variable->GetData().constData(), data.constData());
    EXPECT_EQ(textOf(folder->GetPtr<ExplicitDataVar>("v(a/b)"), "Type"), "voltage");
}

TEST(PlotVectors, ThatGetAnotherNameAreTold)
{
    RawPlot plot = plotNamed("AC Analysis");
    for (const char* const name : {"x", "x", "7", "Title", "Data"})
        plot.vectors.push_back({name, "notype", BVariant(double(plot.vectors.size()))});
    Result root;
    RawImporter importer(&root);
    ResultData* const folder = importer.add(plot);
    const auto valueOf = [&](const char* name) {
        const auto* const variable = folder->GetPtr<Variable>(name);
        return variable ? Brindle::Quay::getScalar<double>(variable->GetData()) : -1.0;
    };
    EXPECT_EQ(valueOf("x"), 0);
    EXPECT_EQ(valueOf("x_2"), 1);
    EXPECT_EQ(valueOf("7_"), 2);
    EXPECT_EQ(valueOf("Title"), 3);
    EXPECT_EQ(valueOf("Data"), 4);
    EXPECT_EQ(importer.renamed(), (QMap<QString, QString>{{"x", "x_2"}, {"7", "7_"}}));
}

TEST(PlotVectors, MayHaveTheEmptyName)
{
    RawPlot plot = plotNamed("AC Analysis");
    plot.vectors = {{"", "notype", BVariant(1.0)}};
    Result root;
    EXPECT_TRUE(RawImporter(&root).add(plot)->HasProperty(""));
}

TEST(PlotVectors, HaveTheUnitsOfTheirType)
{
    RawPlot plot = plotNamed("DC transfer characteristic");
    plot.vectors = {{"temp-sweep", "temp-sweep", BVariant(27.0)},
                    {"i(v1)", "current", BVariant(1.0)},
                    {"n", "voltage-density", BVariant(1.0)}};
    Result root;
    ResultData* const folder = RawImporter(&root).add(plot);
    const auto labelOf = [&](const char* name) {
        const std::optional<Units> units = unitsOf(*folder->GetPtr<Variable>(name));
        return units ? unitsLabel(*units) : "none";
    };
    EXPECT_EQ(labelOf("temp-sweep"), "\u00B0C");
    EXPECT_EQ(labelOf("i(v1)"), "A");
    EXPECT_EQ(labelOf("n"), "none");
    EXPECT_EQ(textOf(folder->GetPtr<Variable>("n"), "Type"), "voltage-density");
}

TEST(PlotVectors, OfTheDimensionsOfTheFirstHaveItAsTheirAxis)
{
    const auto ofShape = [](const std::vector<std::uint64_t>& shape, std::size_t count) {
        return BVariant(std::vector<double>(count, 1.0), shape);
    };
    RawPlot plot = plotNamed("DC transfer characteristic");
    plot.vectors = {{"x", "voltage", ofShape({2, 3}, 6)},
                    {"same", "voltage", ofShape({2, 3}, 6)},
                    {"flat", "voltage", ofShape({6}, 6)},
                    {"turned", "voltage", ofShape({3, 2}, 6)},
                    {"single", "voltage", ofShape({1}, 1)}};
    Result root;
    ResultData* const folder = RawImporter(&root).add(plot);
    Variable* axis = nullptr;
    ASSERT_GE(folder->GetPtr<Variable>("same")->GetIndepVariable(&axis, 0), 0);
    EXPECT_EQ(axis, folder->GetPtr<Variable>("x"));
    EXPECT_EQ(folder->GetPtr<Variable>("same")->GetIndepCount(), 1);
    for (const char* const name : {"x", "flat", "turned", "single"})
        EXPECT_EQ(folder->GetPtr<Variable>(name)->GetIndepCount(), 0) << name;
}

TEST(PlotVectors, ThatLieBesideEachOtherHaveNoAxis)
{
    for (const char* const name : {"Operating Point", "Integrated Noise", "Transfer Function", "constants",
                                   "Pole-Zero Analysis", "Sensitivity Analysis"}) {
        RawPlot plot = plotNamed(name);
        plot.vectors = {{"v(a)", "voltage", BVariant(1.0)}, {"v(b)", "voltage", BVariant(2.0)}};
        Result root;
        EXPECT_EQ(RawImporter(&root).add(plot)->GetPtr<Variable>("v(b)")->GetIndepCount(), 0) << name;
    }
}

TEST(PlotVectors, OfOnePointOfASweepHaveAnAxis)
{
    RawPlot plot = plotNamed("DC transfer characteristic");
    plot.vectors = {{"x", "voltage", BVariant(1.0)}, {"y", "voltage", BVariant(2.0)}};
    Result root;
    EXPECT_EQ(RawImporter(&root).add(plot)->GetPtr<Variable>("y")->GetIndepCount(), 1);
}

struct Sweep : public ::testing::Test
{
    void addPlots(const QStringList& names)
    {
        for (const QString& name : names) {
            RawPlot plot = plotNamed(name);
            const double value = m_value++;
            plot.vectors = {{"x", "voltage", BVariant(std::vector<double>{0.0, 1.0})},
                            {"y", "current", BVariant(std::vector<double>{value, value + 0.5})}};
            importer.add(plot);
        }
    }

    Result root;
    RawImporter importer{&root};

private:
    double m_value = 10.0;
};

TEST_F(Sweep, RefersToThePlotsOfItsKindAndToTheParameter)
{
    addPlots({"AC Analysis", "Operating Point", "AC Analysis"});
    importer.addSweep({"r", {1e3, 2e3}, Units::FromSIString("V/A")});
    auto* const sweep = dynamic_cast<ParameterizedResultData*>(root.GetResultData("ac-sweep"));
    ASSERT_NE(sweep, nullptr);
    Variable* const joined = sweep->FindResultVar("y");
    ASSERT_NE(joined, nullptr);
    const auto doubles = [](const BVariant& data) {
        const Brindle::Quay::IterableContainer<double> values(data);
        return std::vector<double>(values.begin(), values.end());
    };
    EXPECT_EQ(doubles(joined->GetData()), (std::vector<double>{10, 10.5, 12, 12.5}));
    Variable* parameter = nullptr;
    ASSERT_GE(joined->GetIndepVariable(&parameter, 1), 0);
    EXPECT_EQ(parameter->GetName(), "r");
    EXPECT_EQ(doubles(parameter->GetData()), (std::vector<double>{1e3, 1e3, 2e3, 2e3}));
    EXPECT_EQ(unitsLabel(*unitsOf(*parameter)), "V/A");
}

TEST_F(Sweep, IsMadeForEachKindWithThatManyPlots)
{
    addPlots({"AC Analysis", "Operating Point", "AC Analysis", "Operating Point", "Transient Analysis"});
    importer.addSweep({"r", {1, 2}, std::nullopt});
    EXPECT_NE(root.GetResultData("ac-sweep"), nullptr);
    EXPECT_NE(root.GetResultData("op-sweep"), nullptr);
    EXPECT_EQ(root.GetResultData("tran-sweep"), nullptr);
}

TEST_F(Sweep, OfAnotherLengthThanAnyKindIsRefused)
{
    addPlots({"AC Analysis", "Operating Point", "AC Analysis"});
    try {
        importer.addSweep({"r", {1, 2, 3}, std::nullopt});
        ADD_FAILURE() << "was accepted";
    } catch (const Failure& failure) {
        EXPECT_STREQ(failure.what(), "--sweep: 'r' has 3 values, but the file has these plots: 2 ac, 1 op");
    }
}

} // namespace Orrery::Host
