#include "hosts/orrery/TreeListing.h"

#include "Core/FunctionProperty.h"
#include "foundations/property/PropertyObject.h"
#include "foundations/property/PropertyReference.h"
#include "foundations/property/SimpleProperty.h"
#include "hosts/orrery/TreeAccess.h"
#include "units/Units.h"
#include "variables/ExplicitDataVar.h"
#include "variables/FunctionVar.h"

#include <gmock/gmock.h>

#include <complex>

namespace Orrery::Host {

using ::testing::HasSubstr;

namespace {

std::string listed(AbstractProperty& node, const ListingOptions& options = {})
{
    Output out;
    printListing(out, node, options);
    return out.buffer();
}

PropertyObject* addFolder(PropertyObject* parent, const QString& name)
{
    auto* const folder = new PropertyObject(name);
    EXPECT_GE(parent->InsertProperty(folder), 0);
    return folder;
}

ExplicitDataVar* addVariable(PropertyObject* parent, const QString& name, const BVariant& data)
{
    auto* const variable = new ExplicitDataVar(name);
    variable->UpdateData(data);
    EXPECT_GE(parent->InsertProperty(variable), 0);
    return variable;
}

} // namespace

TEST(Listing, ShowsFoldersAndVariablesInColumns)
{
    PropertyObject root;
    PropertyObject* const folder = addFolder(&root, "dc1");
    ASSERT_GE(folder->SetProperty("Title", QString("t")), 0);
    addVariable(folder, "v(a)", BVariant(std::vector<double>(201)));
    addVariable(folder, "temperature", BVariant(27.0));
    addVariable(folder, "z", BVariant(std::vector<std::complex<double>>(6), {2, 3}));
    addVariable(folder, "none", BVariant());
    EXPECT_EQ(listed(root), "dc1/           PropertyObject\n"
                            "  none         ExplVar                null\n"
                            "  temperature  ExplVar         1      double           27\n"
                            "  v(a)         ExplVar         201    double\n"
                            "  z            ExplVar         2 x 3  complex<double>\n");
}

TEST(Listing, OfEverythingInLongForm)
{
    PropertyObject root;
    ASSERT_GE(root.SetProperty("Title", QString("a title")), 0);
    ExplicitDataVar* const variable = addVariable(&root, "z", BVariant(std::vector<int>(6), {2, 3}));
    auto* const reference = new PropertyReference("ref");
    ASSERT_GE(root.InsertProperty(reference), 0);
    ASSERT_GE(reference->SetPropertyRef(variable), 0);
    variable->SetPropertyFlags(PropertyFlagReadOnly | PropertyFlagHidden);
    EXPECT_EQ(listed(root, {true, true}),
              "NAME                TYPE               SHAPE  ELEMENTS  COUNT  ORDERING   FLAGS  VALUE\n"
              "Title               SimpleProperty     1      text      1                 --s    'a title'\n"
              "ref                 PropertyReference                                     --s    -> ../z\n"
              "z                   ExplVar            2 x 3  int32     6      row-major  rh-\n"
              "  Data              SimpleProperty     2 x 3  int32     6      row-major  --s\n"
              "  VariableStrategy  SimpleProperty     1      text      1                 --s    "
              "'ExplicitDataStrategy'\n");
}

TEST(Listing, ShowsUnitsAndAxes)
{
    PropertyObject root;
    PropertyObject& inner = *addFolder(&root, "f");
    const auto add = [](PropertyObject& folder, const char* name) {
        return addVariable(&folder, name, BVariant(std::vector<double>{1, 2}));
    };
    const Variable* const near = add(root, "x/1");
    const Variable* const far = add(inner, "t");
    Variable* const y = add(root, "y");
    ASSERT_GE(y->SetUnits(Units::FromSIString("mV")), 0);
    for (const Variable* const axis : {near, far, near})
        ASSERT_GE(y->AddIndepVariableRef(axis), 0);
    ASSERT_GE(inner.DeleteProperty("t"), 0);
    add(inner, "u");
    ASSERT_GE(y->AddIndepVariableRef(inner.GetPtr<Variable>("u")), 0);
    EXPECT_EQ(listed(root), "f/     PropertyObject\n"
                            "  u    ExplVar         2  double\n"
                            "x%2F1  ExplVar         2  double\n"
                            "y      ExplVar         2  double  [mV]  over x%2F1, ?, x%2F1, /f/u\n");
}

TEST(Listing, ShowsUnitsThatCanNotBeUsedAsNone)
{
    PropertyObject root;
    auto variable = std::make_unique<ExplicitDataVar>("y");
    ASSERT_GE(variable->SetProperty(Variable::sUnitsPropertyName(), 5), 0);
    ASSERT_GE(variable->SetProperty(Variable::sIndependentVars(), 5), 0);
    variable->UpdateData(BVariant(1.5));
    insertNode(&root, std::move(variable));
    EXPECT_EQ(listed(root), "y  ExplVar  1  double  1.5\n");
}

TEST(Listing, ComputesNoFunction)
{
    PropertyObject root;
    auto variable = std::make_unique<FunctionVar>("f");
    ASSERT_GE(variable->AddArgumentRef(variable.get()), 0);
    variable->SetFunction(new Function("polynomial-1"));
    FunctionVar* const function = variable.get();
    insertNode(&root, std::move(variable));
    EXPECT_EQ(listed(root), "f  FunctionVar  null\n");
    EXPECT_EQ(function->getDirtyTracker()->getUpdateCount(), 0);
}

TEST(Listing, GoesOnPastAVariableThatCanNotBeRead)
{
    PropertyObject root;
    auto variable = std::make_unique<FunctionVar>("f");
    ASSERT_GE(variable->DeleteProperty("Data"), 0);
    insertNode(&root, std::move(variable));
    ASSERT_GE(root.SetProperty("g", 5), 0);
    EXPECT_EQ(listed(root, {true, false}).substr(0, 3), "f  ");
    EXPECT_NE(listed(root, {true, false}).find("(can't be read)"), std::string::npos);
    EXPECT_NE(listed(root, {true, false}).find("\ng "), std::string::npos);
}

TEST(Listing, HidesWhatIsHiddenUnlessAllIsWanted)
{
    PropertyObject root;
    addFolder(&root, "shown");
    addFolder(&root, "kept")->SetPropertyFlags(PropertyFlagHidden);
    EXPECT_EQ(listed(root), "shown/  PropertyObject\n");
    EXPECT_THAT(listed(root, {true, false}), HasSubstr("kept/"));
}

TEST(Listing, SortsNumbersByTheirValue)
{
    PropertyObject root;
    for (const char* const name : {"dc10", "dc2", "dc1", "a", "dc01", "dc", "dc1a"})
        addFolder(&root, name);
    std::string names;
    const std::string text = listed(root);
    for (std::size_t begin = 0; begin < text.size(); begin = text.find('\n', begin) + 1)
        names += text.substr(begin, text.find('/', begin) - begin) + ' ';
    EXPECT_EQ(names, "a dc dc01 dc1 dc1a dc2 dc10 ");
}

TEST(Listing, WritesNamesAsInAPath)
{
    PropertyObject root;
    addFolder(&root, "a/b");
    addFolder(&root, "c\n\x1b[2J");
    addFolder(&root, "");
    addFolder(&root, QString::fromUtf8("\xC2\xB5"));
    EXPECT_EQ(listed(root), "%/           PropertyObject\n"
                            "a%2Fb/       PropertyObject\n"
                            "c%0a%1b[2J/  PropertyObject\n"
                            "\xC2\xB5/           PropertyObject\n");
}

TEST(Listing, OfAVariableOrAValueIsItsOwnLine)
{
    PropertyObject root;
    ExplicitDataVar* const variable = addVariable(&root, "x", BVariant(std::vector<float>(3)));
    EXPECT_EQ(listed(*variable), "x  ExplVar  3  float\n");
    ASSERT_GE(root.SetProperty("n", 5), 0);
    EXPECT_EQ(listed(*root.GetPropertyPtr("n")), "n  SimpleProperty  1  int32  5\n");
}

TEST(Listing, OfAnEmptyFolderIsEmpty)
{
    PropertyObject root;
    EXPECT_EQ(listed(root), "");
    EXPECT_EQ(listed(root, {true, true}), "");
}

} // namespace Orrery::Host
