#include "Core/PolynomialMeasurement.h"

#include "Core/MeasurementManager.h"
#include "tests/Core/MeasurementTestSupport.h"
#include "variables/ConcatVar.h"
#include "variables/SweptVarStrategy.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <typeinfo>

namespace Orrery {
namespace {

/// Shows what a subclass of a host may use.
template <int N>
class Open : public PolynomialMeasurement<N>
{
public:
    using PolynomialMeasurement<N>::coefficients;
    using PolynomialMeasurement<N>::init;
    using PolynomialMeasurement<N>::init_parameter_values;
    using PolynomialMeasurement<N>::init_parameters;
    using PolynomialMeasurement<N>::init_tags;
    using PolynomialMeasurement<N>::read_params;
    using Measurement<Variable>::category;
    using Measurement<Variable>::description;
    using Measurement<Variable>::expressionType;
    using Measurement<Variable>::inputType;
    using Measurement<Variable>::name;
    using Measurement<Variable>::output;
    using Measurement<Variable>::parameters;
    using Measurement<Variable>::parameterValues;
    using Measurement<Variable>::symbol;
};

template <int N>
struct Degree
{
    static constexpr int degree = N;
};

/// 0, ..., 0, 1: N + 1 numbers.
std::vector<double> defaultsOf(int degree)
{
    std::vector<double> numbers(static_cast<std::size_t>(degree) + 1, 0.0);
    numbers.back() = 1.0;
    return numbers;
}

Values valuesOf(const std::vector<double>& numbers)
{
    return Values(numbers.begin(), numbers.end());
}

std::vector<double> toStd(const QVector<double>& numbers)
{
    return std::vector<double>(numbers.begin(), numbers.end());
}

const std::string s_tooFew = "invalid vector subscript";

template <class D>
class PolynomialOfDegree : public ::testing::Test
{
protected:
    static constexpr int N = D::degree;
    Open<N> m_polynomial;
    Variable m_input{QStringLiteral("x"), BVariant(std::vector<double>{1, 2, 4})};
    Variable m_output{QStringLiteral("y"), BVariant(std::vector<double>{-1})};
};

using Degrees = ::testing::Types<Degree<1>, Degree<2>, Degree<3>>;
TYPED_TEST_SUITE(PolynomialOfDegree, Degrees);

TYPED_TEST(PolynomialOfDegree, IsNamedByItsDegree)
{
    constexpr int n = TypeParam::degree;
    EXPECT_EQ(this->m_polynomial.get_name(), QStringLiteral("polynomial-") + QString::number(n));
    EXPECT_EQ(this->m_polynomial.get_description(),
              QStringLiteral("polynomial of degree ") + QString::number(n));
    EXPECT_EQ(this->m_polynomial.get_category(), QStringLiteral("Math"));
    EXPECT_EQ(this->m_polynomial.get_symbol(), QString());
    EXPECT_EQ(static_cast<int>(this->m_polynomial.get_input_type()), 3);
}

TYPED_TEST(PolynomialOfDegree, DeclaresOneParameterForEachCoefficient)
{
    const QList<IO::Parameter> parameters = this->m_polynomial.get_parameters();
    const std::vector<double> defaults = defaultsOf(TypeParam::degree);
    ASSERT_EQ(parameters.size(), TypeParam::degree + 1);
    for (int i = 0; i < parameters.size(); ++i) {
        EXPECT_EQ(parameters[i].name, QStringLiteral("C-") + QString::number(i));
        EXPECT_EQ(parameters[i].description, QStringLiteral("polynomial coefficient"));
        EXPECT_TRUE(sameValues({parameters[i].value}, {BVariant(defaults[static_cast<std::size_t>(i)])}))
            << i;
    }
}

TYPED_TEST(PolynomialOfDegree, StartsWithTheDefaultsAsValuesAndCoefficients)
{
    const std::vector<double> defaults = defaultsOf(TypeParam::degree);
    EXPECT_TRUE(sameValues(this->m_polynomial.get_parameter_values(), valuesOf(defaults)));
    EXPECT_EQ(toStd(this->m_polynomial.coefficients), defaults);
}

TYPED_TEST(PolynomialOfDegree, ReadsItsValuesAsCoefficients)
{
    constexpr int n = TypeParam::degree;
    std::vector<double> numbers;
    for (int i = 0; i <= n; ++i)
        numbers.push_back(10.5 - i);
    this->m_polynomial.set_parameter_values(valuesOf(numbers));
    EXPECT_EQ(toStd(this->m_polynomial.coefficients), defaultsOf(n)) << "not before they are read";
    EXPECT_EQ(this->m_polynomial.read_params(), &this->m_polynomial);
    EXPECT_EQ(toStd(this->m_polynomial.coefficients), numbers);
}

TYPED_TEST(PolynomialOfDegree, PassesOverValuesBeyondItsDegree)
{
    Values values = valuesOf(std::vector<double>(TypeParam::degree + 1, 3.0));
    values.emplace_back();       // null, and then no number
    values.emplace_back("text"); // neither is looked at
    this->m_polynomial.set_parameter_values(values);
    this->m_polynomial.read_params();
    EXPECT_EQ(toStd(this->m_polynomial.coefficients), std::vector<double>(TypeParam::degree + 1, 3.0));
    EXPECT_TRUE(sameValues(this->m_polynomial.get_parameter_values(), values));
}

TYPED_TEST(PolynomialOfDegree, FailsWithOneValueTooFewAfterStoringTheOthers)
{
    constexpr int n = TypeParam::degree;
    this->m_polynomial.set_parameter_values(valuesOf(std::vector<double>(n, 5.0)));
    EXPECT_EQ(failureOf([&] { this->m_polynomial.read_params(); }), outOfRange(s_tooFew));
    std::vector<double> stored(n, 5.0);
    stored.push_back(1.0);
    EXPECT_EQ(toStd(this->m_polynomial.coefficients), stored);
}

TYPED_TEST(PolynomialOfDegree, FailsWithoutAnyValue)
{
    this->m_polynomial.set_parameter_values({});
    EXPECT_EQ(failureOf([&] { this->m_polynomial.read_params(); }), outOfRange(s_tooFew));
    EXPECT_EQ(toStd(this->m_polynomial.coefficients), defaultsOf(TypeParam::degree));
}

TYPED_TEST(PolynomialOfDegree, HandsTheDataOfItsInputOn)
{
    this->m_polynomial.set_parameter_values(valuesOf(std::vector<double>(TypeParam::degree + 1, 1e3)));
    this->m_polynomial.set_output(&this->m_output);
    EXPECT_EQ(this->m_polynomial.apply(&this->m_input), &this->m_output);
    EXPECT_EQ(ToDoubles(this->m_output.GetData()), (std::vector<double>{1, 2, 4}));
    EXPECT_EQ(ToDoubles(this->m_input.GetData()), (std::vector<double>{1, 2, 4}));
    EXPECT_EQ(toStd(this->m_polynomial.coefficients), std::vector<double>(TypeParam::degree + 1, 1e3));
}

TYPED_TEST(PolynomialOfDegree, MakesAVariableForEachResultWithoutAnOutput)
{
    const std::unique_ptr<Variable> one(this->m_polynomial.apply(&this->m_input));
    const std::unique_ptr<Variable> other(this->m_polynomial.apply(&this->m_input));
    ASSERT_NE(one, nullptr);
    ASSERT_NE(other, nullptr);
    EXPECT_NE(one, other);
    EXPECT_NE(one.get(), &this->m_input);
    EXPECT_EQ(one->GetParent(), nullptr);
    EXPECT_TRUE(one->GetName().isEmpty());
    EXPECT_EQ(ToDoubles(one->GetData()), (std::vector<double>{1, 2, 4}));
    EXPECT_EQ(ToDoubles(other->GetData()), (std::vector<double>{1, 2, 4}));
    EXPECT_EQ(this->m_polynomial.output, nullptr);
}

TYPED_TEST(PolynomialOfDegree, ClonesItselfWithAllFields)
{
    constexpr int n = TypeParam::degree;
    PolynomialMeasurement<n> source;
    source.push(&this->m_input)->push(nullptr)->set_output(&this->m_output);
    source.set_parameter_values(valuesOf({7.0}));
    const std::unique_ptr<Measurement<Variable>> clone(source.clone());
    ASSERT_NE(clone, nullptr);
    const Measurement<Variable>& made = *clone;
    EXPECT_EQ(typeid(made), typeid(PolynomialMeasurement<n>));
    EXPECT_EQ(clone->get_name(), source.get_name());
    EXPECT_EQ(clone->get_description(), source.get_description());
    EXPECT_EQ(clone->get_category(), QStringLiteral("Math"));
    EXPECT_EQ(clone->get_input_type(), IO::InputType::Variable);
    EXPECT_EQ(clone->get_parameters().size(), n + 1);
    EXPECT_TRUE(sameValues(clone->get_parameter_values(), valuesOf({7.0})));
    EXPECT_EQ(clone->get_stack(), (QList<Variable*>{&this->m_input, nullptr}));
    EXPECT_EQ(clone->get_extension(), source.get_extension());

    clone->set_parameter_values(valuesOf(std::vector<double>(n + 1, 0.0)));
    auto* run = dynamic_cast<PolynomialMeasurement<n>*>(clone.get());
    ASSERT_NE(run, nullptr);
    EXPECT_EQ(run->apply(&this->m_input), &this->m_output);
}

TYPED_TEST(PolynomialOfDegree, CopiesAndAssignsItsCoefficients)
{
    constexpr int n = TypeParam::degree;
    const std::vector<double> numbers(n + 1, 2.5);
    this->m_polynomial.set_parameter_values(valuesOf(numbers));
    this->m_polynomial.read_params();
    this->m_polynomial.push(&this->m_input)->set_output(&this->m_output);

    const Open<n> copy(this->m_polynomial);
    EXPECT_EQ(toStd(copy.coefficients), numbers);
    EXPECT_EQ(copy.output, &this->m_output);

    Open<n> target;
    PolynomialMeasurement<n>& base = target;
    EXPECT_EQ(&(base = this->m_polynomial), &base);
    EXPECT_EQ(toStd(target.coefficients), numbers);
    EXPECT_TRUE(sameValues(target.get_parameter_values(), valuesOf(numbers)));
    EXPECT_EQ(target.get_stack(), QList<Variable*>{&this->m_input});
    EXPECT_EQ(target.output, &this->m_output);
    EXPECT_EQ(target.get_extension(), this->m_polynomial.get_extension());
}

TYPED_TEST(PolynomialOfDegree, StaysWhatItIsWhenAssignedToItself)
{
    constexpr int n = TypeParam::degree;
    const std::vector<double> numbers(n + 1, 2.5);
    this->m_polynomial.set_parameter_values(valuesOf(numbers));
    this->m_polynomial.read_params();
    PolynomialMeasurement<n>& same = this->m_polynomial;
    static_cast<PolynomialMeasurement<n>&>(this->m_polynomial) = same;
    EXPECT_EQ(toStd(this->m_polynomial.coefficients), numbers);
    EXPECT_TRUE(sameValues(this->m_polynomial.get_parameter_values(), valuesOf(numbers)));
}

TYPED_TEST(PolynomialOfDegree, MakesAProbeBoundToItself)
{
    constexpr int n = TypeParam::degree;
    using ItsProbe = Probe<PolynomialMeasurement<n>, Variable, Variable>;
    const std::unique_ptr<AbstractProbe> one(this->m_polynomial.make_probe());
    const std::unique_ptr<AbstractProbe> other(this->m_polynomial.make_probe());
    EXPECT_NE(one, other);
    const auto* probe = dynamic_cast<const ItsProbe*>(one.get());
    ASSERT_NE(probe, nullptr);
    EXPECT_EQ(probe->measurement, &this->m_polynomial);
    EXPECT_EQ(probe->input, nullptr);
    EXPECT_EQ(probe->output, nullptr);
}

// The library's own code fills the tables that a host reads: they are one for the process.
TYPED_TEST(PolynomialOfDegree, IsRememberedWithItsOutputByItsProbe)
{
    constexpr int n = TypeParam::degree;
    this->m_polynomial.push(&this->m_input)->set_output(&this->m_output);
    const std::unique_ptr<AbstractProbe> probe(this->m_polynomial.make_probe());
    EXPECT_EQ(probe->run(nullptr), &this->m_output);
    EXPECT_EQ(ToDoubles(this->m_output.GetData()), (std::vector<double>{1, 2, 4}));
    EXPECT_EQ(ProbeTable<Variable>::remember(probe.get(), nullptr), &this->m_output);
    EXPECT_EQ(ProbeTable<PolynomialMeasurement<n>>::remember(probe.get(), nullptr), &this->m_polynomial);
}

TYPED_TEST(PolynomialOfDegree, FailsThroughItsProbeWithoutATrace)
{
    constexpr int n = TypeParam::degree;
    using ItsProbe = Probe<PolynomialMeasurement<n>, Variable, Variable>;
    const std::unique_ptr<AbstractProbe> made(this->m_polynomial.make_probe());
    auto* probe = dynamic_cast<ItsProbe*>(made.get());
    ASSERT_NE(probe, nullptr);
    Variable untouched;
    const auto data = untouched.GetData();
    this->m_polynomial.push(&this->m_input)->set_output(&untouched)->set_parameter_values({});
    EXPECT_EQ(failureOf([&] { probe->run(nullptr); }), outOfRange(s_tooFew));
    EXPECT_EQ(probe->output, nullptr);
    EXPECT_TRUE(exactlyEqual(untouched.GetData(), data));
}

TYPED_TEST(PolynomialOfDegree, RefusesToRunOnAnEmptyStack)
{
    this->m_polynomial.set_output(&this->m_output);
    const std::unique_ptr<AbstractProbe> probe(this->m_polynomial.make_probe());
    EXPECT_EQ(failureOf([&] { probe->run(nullptr); }).type, "std::invalid_argument");
    EXPECT_EQ(ToDoubles(this->m_output.GetData()), (std::vector<double>{-1}));
}

TYPED_TEST(PolynomialOfDegree, DeclaresItselfAnewOnDemand)
{
    constexpr int n = TypeParam::degree;
    Open<n>& p = this->m_polynomial;
    p.name = p.category = p.description = p.symbol = QStringLiteral("changed");
    p.inputType = IO::InputType::None;
    p.parameters.clear();
    p.set_parameter_values({});
    p.coefficients.fill(9.0);
    p.push(&this->m_input)->set_output(&this->m_output);
    p.init();
    EXPECT_EQ(p.get_name(), QStringLiteral("polynomial-") + QString::number(n));
    EXPECT_EQ(p.get_category(), QStringLiteral("Math"));
    EXPECT_EQ(p.get_description(), QStringLiteral("polynomial of degree ") + QString::number(n));
    EXPECT_EQ(static_cast<int>(p.get_input_type()), 3);
    EXPECT_EQ(p.get_symbol(), QStringLiteral("changed"));
    EXPECT_EQ(p.get_parameters().size(), n + 1);
    EXPECT_TRUE(sameValues(p.get_parameter_values(), valuesOf(defaultsOf(n))));
    EXPECT_EQ(toStd(p.coefficients), defaultsOf(n));
    EXPECT_EQ(p.get_stack(), QList<Variable*>{&this->m_input});
    EXPECT_EQ(p.output, &this->m_output);
}

TYPED_TEST(PolynomialOfDegree, DeclaresEachParameterOnceHoweverOften)
{
    this->m_polynomial.init_parameters();
    this->m_polynomial.init_parameters();
    EXPECT_EQ(this->m_polynomial.get_parameters().size(), TypeParam::degree + 1);
    this->m_polynomial.init_parameter_values();
    this->m_polynomial.init_parameter_values();
    EXPECT_EQ(this->m_polynomial.get_parameter_values().size(), std::size_t(TypeParam::degree) + 1);
}

TYPED_TEST(PolynomialOfDegree, NamesItselfByTagsWithoutTouchingItsValues)
{
    this->m_polynomial.set_parameter_values(valuesOf({4.0}));
    this->m_polynomial.expressionType = static_cast<IO::ExpressionType>(5);
    this->m_polynomial.init_tags();
    EXPECT_TRUE(sameValues(this->m_polynomial.get_parameter_values(), valuesOf({4.0})));
    EXPECT_EQ(this->m_polynomial.get_expression_type(), static_cast<IO::ExpressionType>(5));
}

class PolynomialMeasurementTest : public ::testing::Test
{
protected:
    TestSupport::Failure failureOfReading(const Values& values)
    {
        m_polynomial.set_parameter_values(values);
        return failureOf([&] { m_polynomial.read_params(); });
    }

    Open<2> m_polynomial;
    Variable m_input{QStringLiteral("x"), BVariant(std::vector<double>{1, 2, 4})};
    Variable m_output{QStringLiteral("y"), BVariant(std::vector<double>{-1})};
};

TEST_F(PolynomialMeasurementTest, OfDegreeTwoStartsWithZeroZeroOne)
{
    const PolynomialMeasurement<2> fresh;
    EXPECT_TRUE(sameValues(fresh.get_parameter_values(), doubles({0.0, 0.0, 1.0})));
    EXPECT_EQ(m_polynomial.coefficients, (QVector<double>{0.0, 0.0, 1.0}));
}

TEST_F(PolynomialMeasurementTest, ReadsWhateverConvertsToANumber)
{
    m_polynomial.set_parameter_values({BVariant(7), BVariant("2.5"), BVariant(true)});
    m_polynomial.read_params();
    EXPECT_EQ(m_polynomial.coefficients, (QVector<double>{7.0, 2.5, 1.0}));
}

TEST_F(PolynomialMeasurementTest, ReadsAnArrayOfOneElementAsAScalar)
{
    m_polynomial.set_parameter_values(
        {BVariant(std::vector<double>{1.5}), BVariant(std::vector<float>{-2.0F}, {1, 1, 1}), BVariant(3.0)});
    m_polynomial.read_params();
    EXPECT_EQ(m_polynomial.coefficients, (QVector<double>{1.5, -2.0, 3.0}));
}

TEST_F(PolynomialMeasurementTest, FailsOnAnArrayOfTwoElements)
{
    EXPECT_EQ(failureOfReading({BVariant(std::vector<double>{1, 2}), BVariant(1.0), BVariant(1.0)}),
              runtimeError("Cannot convert Brindle::Quay::BVariant of type 'double' (size: 2) to 'double'"));
}

TEST_F(PolynomialMeasurementTest, FailsOnAnEmptyArray)
{
    EXPECT_EQ(failureOfReading({BVariant(std::vector<int>{}), BVariant(1.0), BVariant(1.0)}).type,
              "std::runtime_error");
}

TEST_F(PolynomialMeasurementTest, FailsOnTextThatIsNoNumber)
{
    EXPECT_EQ(
        failureOfReading({BVariant("wide"), BVariant(1.0), BVariant(1.0)}),
        runtimeError("Cannot convert Brindle::Quay::BVariant of type 'std::string' (size: 1) to 'double'"));
}

TEST_F(PolynomialMeasurementTest, FailsOnNullBeforeItMissesALaterValue)
{
    EXPECT_EQ(failureOfReading({BVariant(8.0), BVariant()}), runtimeError("unknown type"));
    EXPECT_EQ(m_polynomial.coefficients, (QVector<double>{8.0, 0.0, 1.0})) << "the value before it is stored";
}

TEST_F(PolynomialMeasurementTest, KeepsEveryBitOfACoefficient)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    m_polynomial.set_parameter_values(doubles({-0.0, nan, std::numeric_limits<double>::infinity()}));
    m_polynomial.read_params();
    EXPECT_TRUE(std::signbit(m_polynomial.coefficients[0]));
    EXPECT_TRUE(std::isnan(m_polynomial.coefficients[1]));
    EXPECT_TRUE(std::isinf(m_polynomial.coefficients[2]));
}

TEST_F(PolynomialMeasurementTest, TakesItsValuesFromTheDeclaredDefaults)
{
    m_polynomial.parameters[0].value = BVariant(4);
    m_polynomial.parameters[1].value = BVariant("0.25");
    m_polynomial.init_parameter_values();
    EXPECT_TRUE(sameValues(m_polynomial.get_parameter_values(), doubles({4.0, 0.25, 1.0})));
    EXPECT_EQ(m_polynomial.coefficients, (QVector<double>{4.0, 0.25, 1.0}));
}

TEST_F(PolynomialMeasurementTest, FailsOnADefaultThatIsNoNumber)
{
    m_polynomial.parameters[1].value = BVariant("none");
    EXPECT_EQ(
        failureOf([&] { m_polynomial.init_parameter_values(); }),
        runtimeError("Cannot convert Brindle::Quay::BVariant of type 'std::string' (size: 1) to 'double'"));
    m_polynomial.parameters[1].value = BVariant();
    EXPECT_EQ(failureOf([&] { m_polynomial.init_parameter_values(); }), runtimeError("unknown type"));
}

TEST_F(PolynomialMeasurementTest, IgnoresTheStackWhenItIsApplied)
{
    Variable other(QStringLiteral("other"), BVariant(std::vector<double>{9}));
    m_polynomial.push(&other)->set_output(&m_output);
    m_polynomial.apply(&m_input);
    EXPECT_EQ(ToDoubles(m_output.GetData()), (std::vector<double>{1, 2, 4}));
}

TEST_F(PolynomialMeasurementTest, TouchesNothingWithNullAmongItsValues)
{
    ConnectedClient client(m_output);
    m_polynomial.set_output(&m_output)->set_parameter_values({BVariant(1.0), BVariant(), BVariant(1.0)});
    EXPECT_EQ(failureOf([&] { m_polynomial.apply(&m_input); }), runtimeError("unknown type"));
    EXPECT_EQ(ToDoubles(m_output.GetData()), (std::vector<double>{-1}));
    EXPECT_EQ(client.updates, 0);
}

TEST_F(PolynomialMeasurementTest, TouchesNothingWithTooFewValues)
{
    ConnectedClient client(m_output);
    m_polynomial.set_output(&m_output)->set_parameter_values(doubles({1.0, 2.0}));
    EXPECT_EQ(failureOf([&] { m_polynomial.apply(&m_input); }), outOfRange(s_tooFew));
    EXPECT_EQ(ToDoubles(m_output.GetData()), (std::vector<double>{-1}));
    EXPECT_EQ(client.updates, 0);
}

TEST_F(PolynomialMeasurementTest, RefusesANullInput)
{
    ConnectedClient client(m_output);
    m_polynomial.set_output(&m_output);
    EXPECT_EQ(failureOf([&] { m_polynomial.apply(nullptr); }).type, "std::invalid_argument");
    EXPECT_EQ(ToDoubles(m_output.GetData()), (std::vector<double>{-1}));
    EXPECT_EQ(client.updates, 0);
    m_polynomial.set_output(nullptr);
    EXPECT_EQ(failureOf([&] { m_polynomial.apply(nullptr); }).type, "std::invalid_argument");
}

TEST_F(PolynomialMeasurementTest, ChecksItsValuesBeforeItsInput)
{
    m_polynomial.set_parameter_values({});
    EXPECT_EQ(failureOf([&] { m_polynomial.apply(nullptr); }), outOfRange(s_tooFew));
}

// A sweep along nothing can't be read.
TEST_F(PolynomialMeasurementTest, PassesOnWhatTheInputThrowsAndLeavesTheOutputAlone)
{
    Variable sweep(QStringLiteral("s"));
    ASSERT_NE(sweep.SetStrategy<SweptVarStrategy>(), nullptr);
    ASSERT_NE(insert(sweep, std::make_unique<Variable>(QStringLiteral("Param"), BVariant(1.0))), nullptr);
    auto along = std::make_unique<ConcatVar>();
    along->SetName(QStringLiteral("DependVar"));
    ASSERT_NE(insert(sweep, std::move(along)), nullptr);
    ASSERT_EQ(failureOf([&] { sweep.GetData(); }), runtimeError("unknown type"));

    ConnectedClient client(m_output);
    m_polynomial.set_output(&m_output);
    EXPECT_EQ(failureOf([&] { m_polynomial.apply(&sweep); }), runtimeError("unknown type"));
    EXPECT_EQ(client.updates, 0);
    EXPECT_EQ(client.removals, 0);
    EXPECT_EQ(ToDoubles(m_output.GetData()), (std::vector<double>{-1}));

    m_polynomial.set_output(nullptr);
    EXPECT_EQ(failureOf([&] { m_polynomial.apply(&sweep); }), runtimeError("unknown type"));
}

TEST_F(PolynomialMeasurementTest, HandsOnNullForAnInputThatWasMovedFrom)
{
    const Variable heir(std::move(m_input));
    m_polynomial.set_output(&m_output);
    m_polynomial.apply(&m_input); // NOLINT(bugprone-use-after-move): what a host may do by mistake
    EXPECT_TRUE(m_output.GetData().isNull());
}

TEST_F(PolynomialMeasurementTest, TellsTheClientsOfTheOutputOnce)
{
    ConnectedClient ofOutput(m_output);
    ConnectedClient ofInput(m_input);
    m_polynomial.set_output(&m_output);
    m_polynomial.apply(&m_input);
    EXPECT_EQ(ofOutput.updates, 1);
    EXPECT_EQ(ofInput.updates, 0);
}

TEST_F(PolynomialMeasurementTest, MarksWhatDependsOnTheOutput)
{
    Variable dependent(QStringLiteral("z"));
    m_output.GetData();
    AbstractDirtyTracker::bind(m_output.getDirtyTracker(), dependent.getDirtyTracker());
    ASSERT_TRUE(dependent.getDirtyTracker()->isClean());
    m_polynomial.set_output(&m_output);
    m_polynomial.apply(&m_input);
    EXPECT_TRUE(m_output.getDirtyTracker()->isDirty());
    EXPECT_TRUE(dependent.getDirtyTracker()->isDirty());
}

TEST_F(PolynomialMeasurementTest, StoresAnOrdinaryArrayWhateverTheInputIs)
{
    m_input.UpdateDataAsCellArrayFromBVariant(BVariant(std::vector<double>{5}));
    m_polynomial.set_output(&m_output);
    m_polynomial.apply(&m_input);
    IsCellArray flag = IsCellArrayTrue;
    EXPECT_EQ(ToDoubles(m_output.GetData(&flag)), (std::vector<double>{5}));
    EXPECT_EQ(flag, IsCellArrayFalse);
}

TEST_F(PolynomialMeasurementTest, MayHaveItsInputAsItsOutput)
{
    m_polynomial.set_output(&m_input);
    EXPECT_EQ(m_polynomial.apply(&m_input), &m_input);
    EXPECT_EQ(ToDoubles(m_input.GetData()), (std::vector<double>{1, 2, 4}));
}

TEST_F(PolynomialMeasurementTest, KeepsItsOutputApartFromLaterChangesOfTheInput)
{
    m_polynomial.set_output(&m_output);
    m_polynomial.apply(&m_input);
    m_input.UpdateData(BVariant(std::vector<double>{0}));
    EXPECT_EQ(ToDoubles(m_output.GetData()), (std::vector<double>{1, 2, 4}));
}

TEST_F(PolynomialMeasurementTest, HandsOnNullAndEmptyAndManyDimensions)
{
    using Brindle::Quay::DataOrdering;
    const Values inputs = {BVariant(), BVariant(std::vector<double>{}), BVariant(2.5),
                           MakeCounting<std::int16_t>({2, 3, 4}, DataOrdering::ColumnMajor),
                           MakeCounting({1, 5})};
    m_polynomial.set_output(&m_output);
    for (const BVariant& data : inputs) {
        m_input.UpdateData(data);
        m_polynomial.apply(&m_input);
        EXPECT_TRUE(sameValues({m_output.GetData()}, {data}));
        EXPECT_EQ(m_output.GetData().getDataOrdering(), data.getDataOrdering());
    }
}

template <class T>
class PolynomialOfType : public ::testing::Test
{
};
TYPED_TEST_SUITE(PolynomialOfType, TestSupport::ElementTypes, TestSupport::ElementTypeName);

TYPED_TEST(PolynomialOfType, HandsOnElementsOfEveryType)
{
    const std::vector<TypeParam> elements = TestSupport::sampleElements<TypeParam>(6);
    Variable input(QStringLiteral("x"), BVariant(elements, {2, 3}));
    Variable output(QStringLiteral("y"));
    PolynomialMeasurement<1> polynomial;
    polynomial.set_parameter_values(doubles({1e6, -1e6}))->set_output(&output);
    polynomial.apply(&input);
    EXPECT_TRUE(sameValues({output.GetData()}, {BVariant(elements, {2, 3})}));
}

TEST(PolynomialTest, TakesAnyCoefficientsAndCopies)
{
    Polynomial polynomial;
    polynomial.SetCoefficients({});
    QVector<double> numbers = {1.0, 2.0};
    polynomial.SetCoefficients(numbers);
    numbers[0] = 5.0;
    const Polynomial copy(polynomial);
    EXPECT_EQ(copy.kind(), 0);
    polynomial = copy;
    EXPECT_EQ(polynomial.kind(), 0);
}

} // namespace
} // namespace Orrery
