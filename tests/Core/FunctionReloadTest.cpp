// A Function goes to a file and comes back: its name and its values, whatever they are.
#include "Core/FunctionProperty.h"

#include "foundations/property/PropertyObjectFactory.h"
#include "foundations/property/SimpleProperty.h"
#include "tests/Core/MeasurementTestSupport.h"
#include "tests/foundations/storage/CompareTrees.h"
#include "tests/foundations/storage/DataFiles.h"
#include "tests/support/CaseName.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <ostream>
#include <typeinfo>

namespace Orrery {
namespace {

using StorageTest::Open;
using StorageTest::SaveNew;
using StorageTest::ScratchFolder;

const QString s_key = QStringLiteral("f");

Function* addFunction(PropertyObject& root, const QString& name, const Values& values)
{
    auto function = std::make_unique<Function>(name);
    function->SetName(s_key);
    function->SetParameters(values);
    return insert(root, std::move(function));
}

/// A file that holds one tree, saved and opened again.
class Reload
{
public:
    explicit Reload(const StorageTest::Builder& build)
    {
        const QString path = m_folder.Path(QStringLiteral("tree.h5"));
        SaveNew(path, build).reset();
        m_file = Open(path, DataFile::ReadWrite);
    }

    PropertyObject& root() { return *m_file->GetRoot(); }

    /// The Function that has come back; null if it is none, or a class derived from it.
    Function* function()
    {
        auto* found = root().GetPtr<Function>(s_key);
        return found && typeid(*found) == typeid(Function) ? found : nullptr;
    }

    /// Save what has been loaded and open it once more.
    void again()
    {
        const QString path = m_file->GetPath();
        EXPECT_EQ(m_file->Save(), ER_SUCCESS);
        m_file.reset();
        m_file = Open(path, DataFile::ReadWrite);
    }

private:
    ScratchFolder m_folder;
    std::shared_ptr<DataFile> m_file;
};

class FunctionReloadTest : public RegistryTest
{
};

TEST_F(FunctionReloadTest, FindsItsMeasurementAgain)
{
    Reload reload([](PropertyObject& root) {
        addFunction(root, QStringLiteral("polynomial-2"), doubles({1.5, 2.5, 3.5}));
    });
    Function* const function = reload.function();
    ASSERT_NE(function, nullptr);
    EXPECT_EQ(function->GetFunctionName(), QStringLiteral("polynomial-2"));
    EXPECT_TRUE(sameValues(function->GetParameters(), doubles({1.5, 2.5, 3.5})));
    const Measurement<Variable>* const held = function->GetMeasurement();
    ASSERT_NE(held, nullptr);
    EXPECT_EQ(held->get_description(), QStringLiteral("polynomial of degree 2"));
    EXPECT_TRUE(sameValues(held->get_parameter_values(), doubles({1.5, 2.5, 3.5})));
}

TEST_F(FunctionReloadTest, IsDirtyWhenItsMeasurementIsFoundOnly)
{
    Reload known([](PropertyObject& root) { addFunction(root, QStringLiteral("polynomial-1"), {}); });
    ASSERT_NE(known.function(), nullptr);
    EXPECT_TRUE(known.function()->getDirtyTracker()->isDirty());
    Reload unknown([](PropertyObject& root) { addFunction(root, QStringLiteral("unknown"), {}); });
    ASSERT_NE(unknown.function(), nullptr);
    EXPECT_TRUE(unknown.function()->getDirtyTracker()->isClean());
}

TEST_F(FunctionReloadTest, SavesNothingButNameAndValues)
{
    Reload reload([](PropertyObject& root) {
        addFunction(root, QStringLiteral("polynomial-1"), doubles({1, 2}));
    });
    ASSERT_NE(reload.function(), nullptr);
    EXPECT_EQ(reload.function()->GetPropertyCount(), 2);
    EXPECT_EQ(reload.function()->GetPtr<PropertyObject>(QStringLiteral("Parameters"))->GetPropertyCount(), 2);
}

TEST_F(FunctionReloadTest, BringsNoParametersBackWhereThereWereNone)
{
    Reload reload([](PropertyObject& root) {
        auto function = std::make_unique<Function>(QStringLiteral("polynomial-1"));
        function->SetName(s_key);
        insert(root, std::move(function));
    });
    ASSERT_NE(reload.function(), nullptr);
    EXPECT_FALSE(reload.function()->HasProperty(QStringLiteral("Parameters")));
}

TEST_F(FunctionReloadTest, KeepsTooManyAndTooFewValues)
{
    for (const Values& values : {doubles({1, 2, 3, 4, 5}), doubles({1}), Values{}}) {
        Reload reload(
            [&](PropertyObject& root) { addFunction(root, QStringLiteral("polynomial-1"), values); });
        ASSERT_NE(reload.function(), nullptr);
        EXPECT_TRUE(sameValues(reload.function()->GetParameters(), values));
        ASSERT_NE(reload.function()->GetMeasurement(), nullptr);
        EXPECT_TRUE(sameValues(reload.function()->GetMeasurement()->get_parameter_values(), values));
    }
}

TEST_F(FunctionReloadTest, KeepsTheOrderOfManyValues)
{
    Values values;
    for (int i = 0; i < 120; ++i)
        values.emplace_back(i);
    Reload reload([&](PropertyObject& root) { addFunction(root, QStringLiteral("polynomial-1"), values); });
    ASSERT_NE(reload.function(), nullptr);
    EXPECT_TRUE(sameValues(reload.function()->GetParameters(), values));
}

TEST_F(FunctionReloadTest, KeepsAnyName)
{
    const QStringList names = {QString(),
                               QStringLiteral("unknown"),
                               QString::fromUtf8("d\xC3\xA9"
                                                 "cibel \xF0\x9F\x8C\x80"),
                               QStringLiteral("a/b"),
                               QString(QChar(0xD800)),
                               QStringLiteral("a") + QChar(0)};
    for (const QString& name : names) {
        Reload reload([&](PropertyObject& root) { addFunction(root, name, doubles({1})); });
        ASSERT_NE(reload.function(), nullptr);
        EXPECT_EQ(reload.function()->GetFunctionName(), name);
        EXPECT_EQ(reload.function()->GetMeasurement(), nullptr);
    }
}

// A file of a host whose measurement this process doesn't know passes through unharmed.
TEST_F(FunctionReloadTest, CarriesAMeasurementThatThisProcessDoesNotKnow)
{
    const StorageTest::Builder build = [](PropertyObject& root) {
        HostMeasurement gain(QStringLiteral("gain of another host"));
        gain.set_parameter_values({BVariant("dB"), BVariant(), BVariant(std::vector<double>{1, 2})});
        auto* function = insert(root, std::make_unique<Function>());
        function->SetName(s_key);
        function->SetMeasurement(gain);
        function->SetProperty(QStringLiteral("note"), BVariant(4));
    };
    Reload reload(build);
    reload.again();
    ASSERT_NE(reload.function(), nullptr);
    EXPECT_EQ(reload.function()->GetMeasurement(), nullptr);
    EXPECT_EQ(reload.function()->GetFunctionName(), QStringLiteral("gain of another host"));
    DataFile::RootProperty original(nullptr);
    build(original);
    EXPECT_EQ(StorageTest::CompareTrees(original, reload.root()), "");
}

TEST_F(FunctionReloadTest, FindsAHostsOwnMeasurementAgainInAProcessThatKnowsIt)
{
    HostMeasurement* const gain = add(QStringLiteral("Own"), QStringLiteral("gain"), 7);
    gain->set_parameter_values(doubles({0.5}));
    {
        Reload reload([&](PropertyObject& root) {
            auto* function = insert(root, std::make_unique<Function>());
            function->SetName(s_key);
            function->SetMeasurement(*gain);
        });
        ASSERT_NE(reload.function(), nullptr);
        EXPECT_EQ(markOf(reload.function()->GetMeasurement()), 7);
        EXPECT_TRUE(sameValues(reload.function()->GetMeasurement()->get_parameter_values(), doubles({0.5})));
    }
    EXPECT_EQ(liveCount(), 1) << "the loaded Function destroys its own clone";
}

TEST_F(FunctionReloadTest, FindsAMeasurementThatIsRegisteredAfterTheLoad)
{
    Reload reload([](PropertyObject& root) { addFunction(root, QStringLiteral("gain"), {}); });
    ASSERT_NE(reload.function(), nullptr);
    EXPECT_EQ(reload.function()->GetMeasurement(), nullptr);
    manager().Register(new HostMeasurement(QStringLiteral("gain"), QStringLiteral("Own")));
    EXPECT_EQ(reload.function()->SetFunctionName(reload.function()->GetFunctionName()), ER_SUCCESS);
    EXPECT_NE(reload.function()->GetMeasurement(), nullptr);
    reload.root().DeleteProperties(); // before the end of the test takes what is left
}

TEST_F(FunctionReloadTest, LoadsAValueWhereItsParametersBelong)
{
    Reload reload([](PropertyObject& root) {
        auto* function = addFunction(root, QStringLiteral("polynomial-1"), {});
        function->DeleteProperty(QStringLiteral("Parameters"));
        function->SetProperty(QStringLiteral("Parameters"), BVariant(2.5));
    });
    ASSERT_NE(reload.function(), nullptr);
    const MessageCapture log;
    ASSERT_NE(reload.function()->GetMeasurement(), nullptr);
    EXPECT_TRUE(reload.function()->GetMeasurement()->get_parameter_values().empty());
    EXPECT_EQ(log.debug().size(), 2);
    EXPECT_EQ(log.warnings(), QStringList());
}

// What the tree may hold in place of the name: the load goes on, and says so on the debug log.
struct NameCase
{
    const char* name;
    void (*damage)(Function&);

    friend std::ostream& operator<<(std::ostream& out, const NameCase& test) { return out << test.name; }
};

class UnreadableNameReload : public FunctionReloadTest, public ::testing::WithParamInterface<NameCase>
{
};

TEST_P(UnreadableNameReload, IsLoadedAndLogged)
{
    const ScratchFolder folder;
    const QString path = folder.Path(QStringLiteral("tree.h5"));
    SaveNew(path, [](PropertyObject& root) {
        GetParam().damage(*addFunction(root, QStringLiteral("polynomial-1"), doubles({1, 2})));
    }).reset();
    const MessageCapture log;
    const auto file = Open(path);
    EXPECT_EQ(log.debug(),
              QStringList{QStringLiteral("Function Fail at deserialize in Core/FunctionProperty")});
    EXPECT_EQ(log.warnings(), QStringList());
    auto* function = file->GetRoot()->GetPtr<Function>(s_key);
    ASSERT_NE(function, nullptr);
    EXPECT_EQ(function->GetFunctionName(), QString());
    EXPECT_EQ(function->GetMeasurement(), nullptr);
    EXPECT_TRUE(sameValues(function->GetParameters(), doubles({1, 2})));
}

void nameByFolder(Function& function)
{
    function.DeleteProperty(QStringLiteral("Function"));
    insertFolder(function, QStringLiteral("Function"));
}

void nameByArray(Function& function)
{
    function.SetProperty(QStringLiteral("Function"), BVariant(std::vector<std::string>{"a", "b"}));
}

void nameByNull(Function& function)
{
    function.SetProperty(QStringLiteral("Function"), BVariant());
}

INSTANTIATE_TEST_SUITE_P(Names, UnreadableNameReload,
                         ::testing::Values(NameCase{"Folder", &nameByFolder}, NameCase{"Array", &nameByArray},
                                           NameCase{"Null", &nameByNull}),
                         TestSupport::CaseName());

// A file without a name: what the creator has written stays, and is a name like any other.
TEST_F(FunctionReloadTest, KeepsTheDefaultNameWhenTheFileHasNone)
{
    Reload reload([](PropertyObject& root) {
        addFunction(root, QStringLiteral("polynomial-1"), {})->DeleteProperty(QStringLiteral("Function"));
    });
    ASSERT_NE(reload.function(), nullptr);
    EXPECT_EQ(reload.function()->GetFunctionName(), QStringLiteral("Function"));
    EXPECT_EQ(reload.function()->GetMeasurement(), nullptr);
}

std::string roundTripOf(const Values& values)
{
    return StorageTest::RoundTrip(
        [&](PropertyObject& root) { addFunction(root, QStringLiteral("polynomial-3"), values); });
}

template <class T>
class FunctionReloadOfType : public ::testing::Test
{
};
TYPED_TEST_SUITE(FunctionReloadOfType, TestSupport::ElementTypes, TestSupport::ElementTypeName);

TYPED_TEST(FunctionReloadOfType, KeepsScalarsAndArraysBitForBit)
{
    using Sample = TestSupport::Samples<TypeParam>;
    using Brindle::Quay::DataOrdering;
    const std::vector<TypeParam> elements = TestSupport::sampleElements<TypeParam>(6);
    const Values values = {BVariant(Sample::first()),
                           BVariant(Sample::second()),
                           BVariant(Sample::other()),
                           BVariant(Sample::extreme()),
                           BVariant(),
                           BVariant(elements),
                           BVariant(elements, {2, 3}),
                           BVariant(elements, {3, 1, 2}, DataOrdering::ColumnMajor),
                           BVariant(std::vector<TypeParam>{Sample::first()}),
                           BVariant(std::vector<TypeParam>{})};
    EXPECT_EQ(roundTripOf(values), "");

    Reload reload([&](PropertyObject& root) { addFunction(root, QStringLiteral("polynomial-3"), values); });
    ASSERT_NE(reload.function(), nullptr);
    const Values loaded = reload.function()->GetParameters();
    ASSERT_EQ(loaded.size(), values.size());
    for (std::size_t i = 0; i < values.size(); ++i)
        EXPECT_EQ(StorageTest::CompareValues(values[i], loaded[i]), "") << i;
    ASSERT_NE(reload.function()->GetMeasurement(), nullptr);
    EXPECT_EQ(reload.function()->GetMeasurement()->get_parameter_values().size(), values.size());
}

TEST_F(FunctionReloadTest, KeepsTheBitsOfOddNumbers)
{
    std::uint64_t bits = 0x7FF8DEADBEEF1234;
    double nan = 0.0;
    std::memcpy(&nan, &bits, sizeof nan);
    EXPECT_EQ(roundTripOf(doubles({nan, -0.0, std::numeric_limits<double>::infinity(),
                                   std::numeric_limits<double>::denorm_min()})),
              "");
}

TEST_F(FunctionReloadTest, IsMadeByTheFactory)
{
    const std::unique_ptr<PropertyObject> made(
        PropertyObjectFactory::Instance().Create(QStringLiteral("Function")));
    ASSERT_NE(made, nullptr);
    const PropertyObject& object = *made;
    ASSERT_EQ(typeid(object), typeid(Function));
    EXPECT_EQ(static_cast<Function&>(*made).GetFunctionName(), QStringLiteral("Function"));
}

} // namespace
} // namespace Orrery
