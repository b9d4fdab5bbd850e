#include "Core/FunctionProperty.h"

#include "Core/PolynomialMeasurement.h"
#include "foundations/property/PropertyReference.h"
#include "foundations/property/SimpleProperty.h"
#include "tests/Core/MeasurementTestSupport.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <typeinfo>

namespace Orrery {
namespace {

const QString s_nameKey = QStringLiteral("Function");
const QString s_valuesKey = QStringLiteral("Parameters");
const QString s_noFolderLine = QStringLiteral(
    "Orrery::Function::GetParameters tries to get parameters on invalid Property* param_group");
const QString s_unreadableLine = QStringLiteral("Function Fail at deserialize in Core/FunctionProperty");

/// Shows what a subclass of a host may use.
class OpenFunction : public Function
{
public:
    using Function::Function;
    using Function::SetMeasurementFromName;
};

QStringList namesIn(PropertyObject& folder)
{
    QStringList names;
    for (const AbstractProperty* child : folder.GetPropertyListSorted())
        names.append(child->GetName());
    return names;
}

/// The names of the children of "Parameters"; one that can't be a name's without that folder.
QStringList parameterKeys(Function& function)
{
    auto* folder = function.GetPtr<PropertyObject>(s_valuesKey);
    return folder ? namesIn(*folder) : QStringList{QStringLiteral("(no folder)")};
}

/// Puts a folder of this name in the place of whatever is there.
PropertyObject* replaceByFolder(PropertyObject& parent, const QString& name)
{
    auto folder = std::make_unique<PropertyObject>(name);
    if (parent.InsertOrReplaceProperty(folder.get()) < 0)
        throw std::runtime_error("no room for a folder");
    return folder.release();
}

class FunctionTest : public RegistryTest
{
protected:
    /// The lines that `operation` writes to the debug log; a warning fails the test.
    template <class Operation>
    static QStringList debugLinesOf(Operation operation)
    {
        const MessageCapture log;
        operation();
        EXPECT_EQ(log.warnings(), QStringList());
        return log.debug();
    }
};

TEST_F(FunctionTest, NamesItsTypeAndItsChildren)
{
    const Function function;
    EXPECT_EQ(Function::StaticType(), QStringLiteral("Function"));
    EXPECT_EQ(&function.PropertyObjType(), &Function::StaticType());
    EXPECT_EQ(function.GetTypeFlags(), 1U);
    EXPECT_EQ(Function::sFunctionName(), s_nameKey);
    EXPECT_EQ(Function::sParameters(), s_valuesKey);
}

TEST_F(FunctionTest, IsCalledFunctionByDefaultAndHoldsNoMeasurement)
{
    Function function;
    EXPECT_EQ(function.GetFunctionName(), QStringLiteral("Function"));
    EXPECT_EQ(namesIn(function), QStringList{s_nameKey});
    EXPECT_TRUE(function.GetName().isEmpty());
    EXPECT_EQ(debugLinesOf([&] { EXPECT_EQ(function.GetMeasurement(), nullptr); }), QStringList());
}

TEST_F(FunctionTest, LooksUpNothingByDefaultEvenIfSomethingIsCalledFunction)
{
    add(QStringLiteral("Odd"), QStringLiteral("Function"));
    const Function function;
    EXPECT_EQ(function.GetMeasurement(), nullptr);
    EXPECT_EQ(liveCount(), 1);
}

TEST_F(FunctionTest, SavesItsNameAsText)
{
    Function function(QStringLiteral("polynomial-1"));
    const auto* child = function.GetPtr<SimpleProperty>(s_nameKey);
    ASSERT_NE(child, nullptr);
    EXPECT_TRUE(sameValues({child->GetValue()}, {BVariant("polynomial-1")}));
}

TEST_F(FunctionTest, FindsABuiltInMeasurementByName)
{
    for (const char* name : {"polynomial-1", "polynomial-2", "polynomial-3"}) {
        Function function(QString::fromLatin1(name));
        EXPECT_EQ(function.GetFunctionName(), QString::fromLatin1(name));
        EXPECT_EQ(namesIn(function), QStringList{s_nameKey});
        const Measurement<Variable>* found = nullptr;
        debugLinesOf([&] { found = function.GetMeasurement(); });
        ASSERT_NE(found, nullptr) << name;
        EXPECT_EQ(found->get_category(), QStringLiteral("Math"));
        EXPECT_TRUE(found->get_description().endsWith(QLatin1Char(name[11])));
    }
}

TEST_F(FunctionTest, HoldsACloneThatTheManagerDoesNotOwn)
{
    HostMeasurement* const registered = add(QStringLiteral("Own"), QStringLiteral("gain"), 5);
    const OpenFunction function(QStringLiteral("gain"));
    const Measurement<Variable>* held = nullptr;
    debugLinesOf([&] { held = function.GetMeasurement(); });
    EXPECT_EQ(markOf(held), 5);
    EXPECT_NE(held, registered);
    EXPECT_EQ(liveCount(), 2);
}

TEST_F(FunctionTest, DestroysItsMeasurementWithItself)
{
    add(QStringLiteral("Own"), QStringLiteral("gain"));
    {
        const Function function(QStringLiteral("gain"));
        EXPECT_EQ(liveCount(), 2);
    }
    EXPECT_EQ(liveCount(), 1);
}

TEST_F(FunctionTest, KeepsAnUnknownNameWithoutAMeasurement)
{
    Function function(QStringLiteral("no such measurement"));
    EXPECT_EQ(function.GetFunctionName(), QStringLiteral("no such measurement"));
    EXPECT_EQ(function.GetMeasurement(), nullptr);
}

TEST_F(FunctionTest, ComparesNamesExactly)
{
    add(QStringLiteral("Own"), QString::fromUtf8("d\xC3\xA9"
                                                 "cibel"));
    for (const char* name : {"polynomial-", "polynomial-11", "Polynomial-1", " polynomial-1", "polynomial-1 ",
                             "de\xCC\x81"
                             "cibel",
                             ""}) {
        Function function(QString::fromUtf8(name));
        EXPECT_EQ(function.GetMeasurement(), nullptr) << name;
    }
}

TEST_F(FunctionTest, FindsNamesOfAnyText)
{
    const QString nul = QString(QChar(0)) + QStringLiteral("x");
    const QString surrogate = QString(QChar(0xD800));
    int mark = 1;
    for (const QString& name : {QString::fromUtf8("d\xC3\xA9"
                                                  "cibel"),
                                QString::fromUtf8("\xF0\x9F\x8C\x80"), nul, surrogate, QString()}) {
        add(QStringLiteral("Own"), name, mark);
        Function function(name);
        EXPECT_EQ(function.GetFunctionName(), name);
        const Measurement<Variable>* held = nullptr;
        debugLinesOf([&] { held = function.GetMeasurement(); });
        EXPECT_EQ(markOf(held), mark++);
    }
}

TEST_F(FunctionTest, ResolvesABuiltInMeasurementButHasNoParametersThen)
{
    Function function(QStringLiteral("polynomial-1"));
    EXPECT_EQ(debugLinesOf([&] { EXPECT_TRUE(function.GetParameters().empty()); }),
              QStringList{s_noFolderLine});
    const Measurement<Variable>* held = nullptr;
    EXPECT_EQ(debugLinesOf([&] { held = function.GetMeasurement(); }), QStringList{s_noFolderLine});
    ASSERT_NE(held, nullptr);
    EXPECT_TRUE(held->get_parameter_values().empty());
    EXPECT_EQ(held->get_parameters().size(), 2);
}

// Registry order decides, and the list of a category, not its look-up by name.

TEST_F(FunctionTest, TakesTheLaterOfTwoMeasurementsOfOneNameInACategory)
{
    add(QStringLiteral("Own"), QStringLiteral("gain"), 1);
    add(QStringLiteral("Own"), QStringLiteral("other"), 9);
    add(QStringLiteral("Own"), QStringLiteral("gain"), 2);
    add(QStringLiteral("Own"), QStringLiteral("last"), 9);
    Function function(QStringLiteral("gain"));
    function.SetParameters({});
    EXPECT_EQ(markOf(function.GetMeasurement()), 2);
    EXPECT_EQ(liveCount(), 6) << "the clone of the earlier one is let go of, not destroyed";
}

TEST_F(FunctionTest, TakesTheMeasurementOfTheCategoryThatSortsFirst)
{
    HostMeasurement* const late = add(QStringLiteral("Zoology"), QStringLiteral("gain"), 2);
    add(QStringLiteral("Acoustics"), QStringLiteral("gain"), 1);
    late->hooks.onClone = [] { ADD_FAILURE() << "the later category isn't entered"; };
    Function function(QStringLiteral("gain"));
    function.SetParameters({});
    EXPECT_EQ(markOf(function.GetMeasurement()), 1);
    EXPECT_EQ(liveCount(), 3);
}

TEST_F(FunctionTest, SearchesBehindCategoriesWithoutTheName)
{
    manager().GetMeasurements(QStringLiteral("Empty"));
    add(QStringLiteral("Acoustics"), QStringLiteral("other"), 1);
    add(QStringLiteral("Zoology"), QStringLiteral("gain"), 2);
    Function function(QStringLiteral("gain"));
    function.SetParameters({});
    EXPECT_EQ(markOf(function.GetMeasurement()), 2);
}

TEST_F(FunctionTest, AsksForTheNameThatAMeasurementHasNow)
{
    HostMeasurement* const gain = add(QStringLiteral("Own"), QStringLiteral("gain"), 3);
    gain->name = QStringLiteral("level");
    EXPECT_EQ(Function(QStringLiteral("gain")).GetMeasurement(), nullptr);
    Function function(QStringLiteral("level"));
    function.SetParameters({});
    EXPECT_EQ(markOf(function.GetMeasurement()), 3);
}

TEST_F(FunctionTest, AnswersALookUpByWhetherItFoundSomething)
{
    add(QStringLiteral("Own"), QStringLiteral("gain"), 1);
    OpenFunction function;
    EXPECT_FALSE(function.SetMeasurementFromName(QStringLiteral("unknown")));
    EXPECT_TRUE(function.SetMeasurementFromName(QStringLiteral("gain")));
    EXPECT_EQ(function.GetFunctionName(), QStringLiteral("Function")) << "the saved name isn't its business";
    EXPECT_EQ(namesIn(function), QStringList{s_nameKey});
    EXPECT_FALSE(function.SetMeasurementFromName(QStringLiteral("unknown")));
    function.SetParameters({});
    EXPECT_EQ(markOf(function.GetMeasurement()), 1);
}

TEST_F(FunctionTest, LeavesTheFormerMeasurementAliveInALookUp)
{
    add(QStringLiteral("Own"), QStringLiteral("gain"), 1);
    add(QStringLiteral("Own"), QStringLiteral("level"), 2);
    OpenFunction function(QStringLiteral("gain"));
    function.SetParameters({});
    const Measurement<Variable>* const former = function.GetMeasurement();
    EXPECT_TRUE(function.SetMeasurementFromName(QStringLiteral("level")));
    EXPECT_EQ(markOf(function.GetMeasurement()), 2);
    ASSERT_EQ(liveCount(), 4);
    EXPECT_EQ(markOf(former), 1);
}

// SetFunctionName

TEST_F(FunctionTest, TakesANewNameAndItsMeasurement)
{
    Function function;
    EXPECT_EQ(function.SetFunctionName(QStringLiteral("polynomial-3")), ER_SUCCESS);
    EXPECT_EQ(function.GetFunctionName(), QStringLiteral("polynomial-3"));
    function.SetParameters({});
    ASSERT_NE(function.GetMeasurement(), nullptr);
    EXPECT_EQ(function.GetMeasurement()->get_parameters().size(), 4);
}

TEST_F(FunctionTest, WritesAnUnknownNameAndKeepsItsMeasurement)
{
    add(QStringLiteral("Own"), QStringLiteral("gain"), 1);
    Function function(QStringLiteral("gain"));
    function.SetParameters({});
    const Measurement<Variable>* const held = function.GetMeasurement();
    EXPECT_EQ(function.SetFunctionName(QStringLiteral("unknown")), ER_NOT_FOUND);
    EXPECT_EQ(function.GetFunctionName(), QStringLiteral("unknown"));
    EXPECT_EQ(function.GetMeasurement(), held);
    EXPECT_EQ(liveCount(), 2);
}

TEST_F(FunctionTest, TakesTheEmptyNameAsAnyOther)
{
    Function function(QStringLiteral("polynomial-1"));
    EXPECT_EQ(function.SetFunctionName(QString()), ER_NOT_FOUND);
    EXPECT_EQ(function.GetFunctionName(), QString());
    EXPECT_TRUE(function.HasProperty(s_nameKey));
    add(QStringLiteral("Own"), QString(), 4);
    Function nameless;
    EXPECT_EQ(nameless.SetFunctionName(QString()), ER_SUCCESS);
    nameless.SetParameters({});
    EXPECT_EQ(markOf(nameless.GetMeasurement()), 4);
}

TEST_F(FunctionTest, KeepsParameterValuesWhenItsNameChanges)
{
    Function function;
    function.SetParameters(doubles({4, 5}));
    function.SetFunctionName(QStringLiteral("polynomial-2"));
    EXPECT_TRUE(sameValues(function.GetParameters(), doubles({4, 5})));
    ASSERT_NE(function.GetMeasurement(), nullptr);
    EXPECT_TRUE(sameValues(function.GetMeasurement()->get_parameter_values(), doubles({4, 5})));
}

TEST_F(FunctionTest, RefusesANameWhereAFolderStands)
{
    add(QStringLiteral("Own"), QStringLiteral("gain"), 1);
    Function function;
    replaceByFolder(function, s_nameKey);
    EXPECT_EQ(function.SetFunctionName(QStringLiteral("gain")), ER_INVALID_ARGUMENT);
    EXPECT_EQ(function.GetMeasurement(), nullptr);
    EXPECT_EQ(function.GetFunctionName(), QString());
    EXPECT_EQ(liveCount(), 1);
}

TEST_F(FunctionTest, MakesItsNameAnewWhenItIsGone)
{
    Function function;
    function.DeleteProperty(s_nameKey);
    EXPECT_EQ(function.GetFunctionName(), QString());
    EXPECT_EQ(function.SetFunctionName(QStringLiteral("polynomial-1")), ER_SUCCESS);
    EXPECT_EQ(function.GetFunctionName(), QStringLiteral("polynomial-1"));
}

TEST_F(FunctionTest, HasNoNameThatIsNotText)
{
    for (const BVariant& value : {BVariant(2.5), BVariant(std::vector<std::string>{"a", "b"}), BVariant()}) {
        Function function;
        function.SetProperty(s_nameKey, value);
        EXPECT_EQ(function.GetFunctionName(), QString()) << Describe(value);
    }
}

// Parameters

TEST_F(FunctionTest, WritesItsValuesUnderTheirIndices)
{
    Function function;
    EXPECT_EQ(function.SetParameters({BVariant(1.5), BVariant("text"), BVariant(7)}), ER_SUCCESS);
    EXPECT_EQ(parameterKeys(function),
              (QStringList{QStringLiteral("0"), QStringLiteral("1"), QStringLiteral("2")}));
    auto* folder = function.GetPtr<PropertyObject>(s_valuesKey);
    EXPECT_EQ(folder->PropertyObjType(), PropertyObject::StaticType());
    EXPECT_TRUE(
        sameValues({folder->GetPtr<SimpleProperty>(QStringLiteral("1"))->GetValue()}, {BVariant("text")}));
    EXPECT_TRUE(sameValues(function.GetParameters(), {BVariant(1.5), BVariant("text"), BVariant(7)}));
}

TEST_F(FunctionTest, LeavesExactlyTheKeysOfItsLastValues)
{
    Function function;
    function.SetParameters(doubles({1, 2, 3, 4, 5}));
    function.GetPtr<PropertyObject>(s_valuesKey)->SetProperty(QStringLiteral("note"), BVariant(1));
    EXPECT_EQ(function.SetParameters(doubles({6, 7, 8})), ER_SUCCESS);
    EXPECT_EQ(parameterKeys(function),
              (QStringList{QStringLiteral("0"), QStringLiteral("1"), QStringLiteral("2")}));
    EXPECT_TRUE(sameValues(function.GetParameters(), doubles({6, 7, 8})));
}

TEST_F(FunctionTest, TakesNoValuesAsAnEmptyFolder)
{
    Function function;
    function.SetParameters(doubles({1, 2}));
    EXPECT_EQ(function.SetParameters({}), ER_SUCCESS);
    EXPECT_EQ(parameterKeys(function), QStringList());
    EXPECT_EQ(debugLinesOf([&] { EXPECT_TRUE(function.GetParameters().empty()); }), QStringList());
}

TEST_F(FunctionTest, ReadsMoreThanTenValuesInTheOrderOfTheirNumbers)
{
    Values values;
    for (int i = 0; i < 112; ++i)
        values.emplace_back(i);
    Function function;
    EXPECT_EQ(function.SetParameters(values), ER_SUCCESS);
    EXPECT_EQ(function.GetPtr<PropertyObject>(s_valuesKey)->GetPropertyCount(), 112);
    EXPECT_TRUE(sameValues(function.GetParameters(), values));
}

TEST_F(FunctionTest, KeepsNullAmongItsValues)
{
    Function function;
    EXPECT_EQ(function.SetParameters({BVariant(), BVariant(1.0), BVariant()}), ER_SUCCESS);
    EXPECT_TRUE(sameValues(function.GetParameters(), {BVariant(), BVariant(1.0), BVariant()}));
}

TEST_F(FunctionTest, PassesOverWhatIsNoNumberedValue)
{
    Function function;
    PropertyObject* const folder = replaceByFolder(function, s_valuesKey);
    folder->SetProperty(QStringLiteral("10"), BVariant(10));
    folder->SetProperty(QStringLiteral("9"), BVariant(9));
    folder->SetProperty(QStringLiteral("note"), BVariant(-1));
    folder->SetProperty(QStringLiteral("3x"), BVariant(-2));
    folder->SetProperty(QStringLiteral("0"), BVariant(0));
    replaceByFolder(*folder, QStringLiteral("1"));
    ASSERT_GE(folder->SetPropertyRef(QStringLiteral("2"), folder->GetPropertyConstPtr(QStringLiteral("9"))),
              0);
    EXPECT_EQ(debugLinesOf([&] {
                  EXPECT_TRUE(sameValues(function.GetParameters(), {BVariant(0), BVariant(9), BVariant(10)}));
              }),
              QStringList());
}

TEST_F(FunctionTest, LogsAValueThatStandsWhereItsParametersBelong)
{
    Function function;
    function.SetProperty(s_valuesKey, BVariant(2.5));
    EXPECT_EQ(debugLinesOf([&] { EXPECT_TRUE(function.GetParameters().empty()); }),
              QStringList{s_noFolderLine});
}

TEST_F(FunctionTest, ReplacesAValueThatStandsWhereItsParametersBelong)
{
    Function function;
    function.SetProperty(s_valuesKey, BVariant(2.5));
    EXPECT_EQ(function.SetParameters(doubles({1})), ER_SUCCESS);
    EXPECT_TRUE(sameValues(function.GetParameters(), doubles({1})));
}

// A tree has a largest depth; a Function at the bottom has no room for a folder.
class DeepFunctionTest : public FunctionTest
{
protected:
    void SetUp() override
    {
        FunctionTest::SetUp();
        PropertyObject* folder = &m_root;
        for (int depth = 2; depth < PropertyObject::MaxDepth; ++depth)
            folder = replaceByFolder(*folder, QStringLiteral("d"));
        auto function = std::make_unique<Function>();
        ASSERT_EQ(function->SetName(QStringLiteral("f")), ER_SUCCESS);
        ASSERT_EQ(folder->InsertProperty(function.get()), ER_SUCCESS);
        m_function = function.release();
    }

    void TearDown() override
    {
        m_root.DeleteProperties();
        FunctionTest::TearDown();
    }

    PropertyObject m_root;
    Function* m_function = nullptr;
};

TEST_F(DeepFunctionTest, HandsUpThatThereIsNoRoomForItsParameters)
{
    EXPECT_EQ(m_function->SetParameters(doubles({1, 2})), ER_FAILED);
    EXPECT_TRUE(m_function->getDirtyTracker()->isDirty());
    EXPECT_FALSE(m_function->HasProperty(s_valuesKey));
    EXPECT_EQ(m_function->SetParameters({}), ER_FAILED);
}

TEST_F(DeepFunctionTest, TakesAMeasurementWhoseParametersItCannotSave)
{
    HostMeasurement gain(QStringLiteral("gain"));
    gain.mark = 6;
    gain.set_parameter_values(doubles({1}));
    EXPECT_EQ(m_function->SetMeasurement(gain), ER_SUCCESS);
    EXPECT_EQ(m_function->GetFunctionName(), QStringLiteral("gain"));
    debugLinesOf([&] { EXPECT_EQ(markOf(m_function->GetMeasurement()), 6); });
    m_root.DeleteProperties();
    EXPECT_EQ(liveCount(), 1);
}

// SetMeasurement

TEST_F(FunctionTest, TakesNameAndValuesFromAMeasurement)
{
    Function function;
    EXPECT_EQ(function.SetMeasurement(PolynomialMeasurement<2>()), ER_SUCCESS);
    EXPECT_EQ(function.GetFunctionName(), QStringLiteral("polynomial-2"));
    EXPECT_TRUE(sameValues(function.GetParameters(), doubles({0, 0, 1})));
    ASSERT_NE(function.GetMeasurement(), nullptr);
    EXPECT_EQ(function.GetMeasurement()->get_description(), QStringLiteral("polynomial of degree 2"));
    EXPECT_TRUE(sameValues(function.GetMeasurement()->get_parameter_values(), doubles({0, 0, 1})));
}

TEST_F(FunctionTest, HoldsACloneOfAMeasurementThatNobodyHasRegistered)
{
    HostMeasurement gain(QString::fromUtf8("d\xC3\xA9"
                                           "cibel"));
    gain.mark = 8;
    gain.set_parameter_values({BVariant("a"), BVariant()});
    Function function;
    EXPECT_EQ(function.SetMeasurement(gain), ER_SUCCESS);
    EXPECT_EQ(function.GetFunctionName(), gain.name);
    EXPECT_TRUE(sameValues(function.GetParameters(), {BVariant("a"), BVariant()}));
    EXPECT_EQ(markOf(function.GetMeasurement()), 8);
    EXPECT_NE(function.GetMeasurement(), &gain);
    EXPECT_EQ(manager().FindMeasurement(gain.name), nullptr);
    EXPECT_EQ(liveCount(), 2);
}

TEST_F(FunctionTest, DropsFormerValuesForAMeasurementWithoutAny)
{
    Function function;
    function.SetParameters(doubles({1, 2, 3}));
    const HostMeasurement gain(QStringLiteral("gain"));
    EXPECT_EQ(function.SetMeasurement(gain), ER_SUCCESS);
    EXPECT_EQ(parameterKeys(function), QStringList());
}

TEST_F(FunctionTest, LeavesTheFormerMeasurementAliveForANewOne)
{
    HostMeasurement first(QStringLiteral("first"));
    first.mark = 1;
    HostMeasurement second(QStringLiteral("second"));
    second.mark = 2;
    {
        Function function;
        function.SetMeasurement(first);
        const Measurement<Variable>* const former = function.GetMeasurement();
        function.SetMeasurement(second);
        EXPECT_EQ(markOf(function.GetMeasurement()), 2);
        ASSERT_EQ(liveCount(), 4);
        EXPECT_EQ(markOf(former), 1);
    }
    ASSERT_EQ(liveCount(), 3) << "the Function destroys what it holds at its end";
    std::set<const HostMeasurement*> left = HostMeasurement::live();
    left.erase(&first);
    left.erase(&second);
    delete *left.begin(); // before the two locals go
}

TEST_F(FunctionTest, TakesItsOwnMeasurementAgain)
{
    HostMeasurement gain(QStringLiteral("gain"));
    gain.mark = 1;
    gain.set_parameter_values(doubles({1}));
    Function function;
    function.SetMeasurement(gain);
    const auto* const former = function.GetMeasurement();
    function.SetParameters(doubles({5}));
    EXPECT_EQ(function.SetMeasurement(*former), ER_SUCCESS);
    EXPECT_TRUE(sameValues(function.GetParameters(), doubles({1})));
    EXPECT_NE(function.GetMeasurement(), former);
    delete former;
}

TEST_F(FunctionTest, KeepsWhatItHasWhenAMeasurementCannotBeCloned)
{
    HostMeasurement gain(QStringLiteral("gain"));
    gain.hooks.onClone = [] { throw std::runtime_error("no clone"); };
    Function function;
    function.SetParameters(doubles({3}));
    EXPECT_EQ(failureOf([&] { function.SetMeasurement(gain); }), runtimeError("no clone"));
    EXPECT_EQ(function.GetFunctionName(), QStringLiteral("Function"));
    EXPECT_EQ(function.GetMeasurement(), nullptr);
    EXPECT_TRUE(sameValues(function.GetParameters(), doubles({3})));
}

// GetMeasurement

TEST_F(FunctionTest, HandsItsMeasurementTheValuesThatStandInTheTree)
{
    Function function(QStringLiteral("polynomial-1"));
    function.SetParameters(doubles({2, 3}));
    const Measurement<Variable>* const held = function.GetMeasurement();
    EXPECT_TRUE(sameValues(held->get_parameter_values(), doubles({2, 3})));
    function.GetPtr<PropertyObject>(s_valuesKey)->SetProperty(QStringLiteral("1"), BVariant(8.0));
    EXPECT_EQ(function.GetMeasurement(), held);
    EXPECT_TRUE(sameValues(held->get_parameter_values(), doubles({2, 8})));
}

TEST_F(FunctionTest, HandsItsMeasurementTooManyAndTooFewValuesAsTheyAre)
{
    Function function(QStringLiteral("polynomial-1"));
    function.SetParameters(doubles({1, 2, 3, 4, 5}));
    EXPECT_TRUE(sameValues(function.GetMeasurement()->get_parameter_values(), doubles({1, 2, 3, 4, 5})));
    function.SetParameters(doubles({1}));
    EXPECT_TRUE(sameValues(function.GetMeasurement()->get_parameter_values(), doubles({1})));
    function.SetParameters({});
    EXPECT_TRUE(function.GetMeasurement()->get_parameter_values().empty());
}

TEST_F(FunctionTest, TakesTheValuesFromItsMeasurementWhenThereAreNoneInTheTree)
{
    Function function;
    function.SetMeasurement(PolynomialMeasurement<1>());
    function.DeleteProperty(s_valuesKey);
    EXPECT_EQ(debugLinesOf([&] { EXPECT_TRUE(function.GetMeasurement()->get_parameter_values().empty()); }),
              QStringList{s_noFolderLine});
}

// Copies

TEST_F(FunctionTest, CopiesItsChildrenAndItsMeasurement)
{
    HostMeasurement gain(QStringLiteral("gain"));
    gain.mark = 3;
    gain.set_parameter_values(doubles({1, 2}));
    Function source;
    source.SetName(QStringLiteral("f"));
    source.SetMeasurement(gain);
    source.SetProperty(QStringLiteral("note"), BVariant("of a host"));

    Function copy(source);
    EXPECT_EQ(copy.GetName(), QStringLiteral("f"));
    EXPECT_EQ(namesIn(copy), namesIn(source));
    EXPECT_EQ(copy.GetFunctionName(), QStringLiteral("gain"));
    EXPECT_TRUE(sameValues(copy.GetParameters(), doubles({1, 2})));
    EXPECT_EQ(markOf(copy.GetMeasurement()), 3);
    EXPECT_NE(copy.GetMeasurement(), source.GetMeasurement());
    EXPECT_EQ(liveCount(), 3);

    copy.SetParameters(doubles({9}));
    EXPECT_TRUE(sameValues(source.GetParameters(), doubles({1, 2})));
}

TEST_F(FunctionTest, CopiesTheLackOfAMeasurement)
{
    const Function source(QStringLiteral("unknown"));
    const Function copy(source);
    EXPECT_EQ(copy.GetMeasurement(), nullptr);
    EXPECT_EQ(copy.GetFunctionName(), QStringLiteral("unknown"));
}

TEST_F(FunctionTest, CopiesTheMeasurementThatIsHeldWhateverTheName)
{
    add(QStringLiteral("Own"), QStringLiteral("gain"), 1);
    add(QStringLiteral("Own"), QStringLiteral("level"), 2);
    Function source(QStringLiteral("gain"));
    source.SetParameters({});
    source.SetFunctionName(QStringLiteral("unknown"));
    source.SetProperty(s_nameKey, QStringLiteral("level")); // behind its back
    EXPECT_EQ(markOf(Function(source).GetMeasurement()), 1);
    Function assigned;
    assigned = source;
    EXPECT_EQ(markOf(assigned.GetMeasurement()), 1);
    EXPECT_EQ(assigned.GetFunctionName(), QStringLiteral("level"));
}

TEST_F(FunctionTest, AssignsItsChildrenAndDestroysTheFormerMeasurement)
{
    add(QStringLiteral("Own"), QStringLiteral("gain"), 1);
    add(QStringLiteral("Own"), QStringLiteral("level"), 2);
    Function source(QStringLiteral("level"));
    source.SetParameters(doubles({4}));
    Function target(QStringLiteral("gain"));
    target.SetProperty(QStringLiteral("note"), BVariant(1));
    ASSERT_EQ(liveCount(), 4);
    EXPECT_EQ(&(target = source), &target);
    EXPECT_EQ(liveCount(), 4) << "one clone for another";
    EXPECT_EQ(markOf(target.GetMeasurement()), 2);
    EXPECT_NE(target.GetMeasurement(), source.GetMeasurement());
    EXPECT_EQ(target.GetFunctionName(), QStringLiteral("level"));
    EXPECT_TRUE(sameValues(target.GetParameters(), doubles({4})));
    EXPECT_FALSE(target.HasProperty(QStringLiteral("note")));
}

TEST_F(FunctionTest, AssignsTheLackOfAMeasurement)
{
    add(QStringLiteral("Own"), QStringLiteral("gain"), 1);
    const Function source;
    Function target(QStringLiteral("gain"));
    target = source;
    EXPECT_EQ(target.GetMeasurement(), nullptr);
    EXPECT_EQ(target.GetFunctionName(), QStringLiteral("Function"));
    EXPECT_EQ(liveCount(), 1);
}

TEST_F(FunctionTest, StaysWhatItIsWhenAssignedToItself)
{
    HostMeasurement gain(QStringLiteral("gain"));
    gain.mark = 3;
    gain.set_parameter_values(doubles({1, 2}));
    Function function;
    function.SetMeasurement(gain);
    const Function& same = function;
    function = same;
    EXPECT_EQ(function.GetFunctionName(), QStringLiteral("gain"));
    EXPECT_TRUE(sameValues(function.GetParameters(), doubles({1, 2})));
    EXPECT_EQ(markOf(function.GetMeasurement()), 3);
    EXPECT_EQ(liveCount(), 2);
}

TEST_F(FunctionTest, ClonesItselfWithNameFlagsAndMeasurement)
{
    HostMeasurement gain(QStringLiteral("gain"));
    gain.mark = 3;
    gain.set_parameter_values(doubles({1, 2}));
    PropertyObject root;
    auto* source = insert(root, std::make_unique<Function>());
    source->SetName(QStringLiteral("f"));
    source->SetMeasurement(gain);
    source->SetPropertyFlags(PropertyFlagHidden);

    const std::unique_ptr<AbstractProperty> made(source->Clone());
    const AbstractProperty& object = *made;
    ASSERT_EQ(typeid(object), typeid(Function));
    auto& clone = static_cast<Function&>(*made);
    EXPECT_EQ(clone.GetParent(), nullptr);
    EXPECT_EQ(clone.GetName(), QStringLiteral("f"));
    EXPECT_EQ(clone.GetPropertyFlags(), static_cast<unsigned>(PropertyFlagHidden));
    EXPECT_EQ(clone.GetFunctionName(), QStringLiteral("gain"));
    EXPECT_TRUE(sameValues(clone.GetParameters(), doubles({1, 2})));
    EXPECT_EQ(markOf(clone.GetMeasurement()), 3);
    EXPECT_NE(clone.GetMeasurement(), source->GetMeasurement());
    root.DeleteProperties();
    EXPECT_EQ(markOf(clone.GetMeasurement()), 3);
}

// OnDeserialization

TEST_F(FunctionTest, LooksItsMeasurementUpWhenItIsLoaded)
{
    add(QStringLiteral("Own"), QStringLiteral("gain"), 1);
    Function function;
    function.SetProperty(s_nameKey, QStringLiteral("gain"));
    ASSERT_EQ(function.GetMeasurement(), nullptr);
    EXPECT_EQ(debugLinesOf([&] { function.OnDeserialization(); }), QStringList());
    function.SetParameters({});
    EXPECT_EQ(markOf(function.GetMeasurement()), 1);
}

TEST_F(FunctionTest, KeepsAnUnknownNameSilentlyWhenItIsLoaded)
{
    Function function;
    function.SetProperty(s_nameKey, QStringLiteral("of another host"));
    EXPECT_EQ(debugLinesOf([&] { function.OnDeserialization(); }), QStringList());
    EXPECT_EQ(function.GetMeasurement(), nullptr);
    EXPECT_EQ(function.GetFunctionName(), QStringLiteral("of another host"));
}

TEST_F(FunctionTest, LogsANameThatCannotBeReadWhenItIsLoaded)
{
    add(QStringLiteral("Own"), QString(), 1); // nothing is looked up, not even the empty name
    Function asFolder;
    replaceByFolder(asFolder, s_nameKey);
    Function asNumber;
    asNumber.SetProperty(s_nameKey, BVariant(1.5));
    Function asArray;
    asArray.SetProperty(s_nameKey, BVariant(std::vector<std::string>{"polynomial-1", "polynomial-2"}));
    Function without;
    without.DeleteProperty(s_nameKey);
    for (Function* function : {&asFolder, &asNumber, &asArray, &without}) {
        EXPECT_EQ(debugLinesOf([&] { function->OnDeserialization(); }), QStringList{s_unreadableLine});
        EXPECT_EQ(function->GetMeasurement(), nullptr);
        EXPECT_TRUE(function->getDirtyTracker()->isClean());
    }
}

} // namespace
} // namespace Orrery
