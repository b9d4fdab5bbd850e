#include "Core/Measurement.h"

#include "foundations/property/Extensions.h"
#include "tests/Core/MeasurementTestSupport.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <type_traits>

namespace Orrery {
namespace {

using Base = Measurement<Variable>;

/// Every field set, and each to another value.
void fill(HostMeasurement& measurement, Variable* first, Variable* second)
{
    measurement.name = QStringLiteral("gain");
    measurement.symbol = QStringLiteral("G");
    measurement.category = QStringLiteral("Signals");
    measurement.description = QStringLiteral("ratio of two levels");
    measurement.expressionType = static_cast<IO::ExpressionType>(7);
    measurement.inputType = IO::InputType::Variable;
    measurement.parameters = {{QStringLiteral("P-0"), QStringLiteral("level"), BVariant(2.5)}};
    measurement.parameterValues = doubles({4.5, 5.5});
    measurement.stack = {first, nullptr, second};
    measurement.output = second;
}

void expectFilled(const HostMeasurement& measurement, Variable* first, Variable* second)
{
    EXPECT_EQ(measurement.name, QStringLiteral("gain"));
    EXPECT_EQ(measurement.get_symbol(), QStringLiteral("G"));
    EXPECT_EQ(measurement.get_category(), QStringLiteral("Signals"));
    EXPECT_EQ(measurement.get_description(), QStringLiteral("ratio of two levels"));
    EXPECT_EQ(measurement.get_expression_type(), static_cast<IO::ExpressionType>(7));
    EXPECT_EQ(measurement.get_input_type(), IO::InputType::Variable);
    ASSERT_EQ(measurement.get_parameters().size(), 1);
    EXPECT_EQ(measurement.get_parameters()[0].name, QStringLiteral("P-0"));
    EXPECT_EQ(measurement.get_parameters()[0].description, QStringLiteral("level"));
    EXPECT_EQ(ToDoubles(measurement.get_parameters()[0].value), (std::vector<double>{2.5}));
    EXPECT_TRUE(sameValues(measurement.get_parameter_values(), doubles({4.5, 5.5})));
    EXPECT_EQ(measurement.get_stack(), (QList<Variable*>{first, nullptr, second}));
    EXPECT_EQ(measurement.output, second);
}

class MeasurementTest : public RegistryTest
{
protected:
    Variable m_first{QStringLiteral("first")};
    Variable m_second{QStringLiteral("second")};
};

TEST_F(MeasurementTest, StartsWithoutNamesParametersInputsAndOutput)
{
    class Bare : public Base
    {
    public:
        QString get_name() override { return name; }
        AbstractProbe* make_probe() override { return nullptr; }
        Base* clone() const override { return new Bare(*this); }
        Variable* theOutput() const { return output; }
    };
    Bare bare;
    EXPECT_TRUE(bare.get_name().isEmpty());
    EXPECT_TRUE(bare.get_symbol().isEmpty());
    EXPECT_TRUE(bare.get_category().isEmpty());
    EXPECT_TRUE(bare.get_description().isEmpty());
    EXPECT_TRUE(bare.get_parameters().isEmpty());
    EXPECT_TRUE(bare.get_parameter_values().empty());
    EXPECT_TRUE(bare.get_stack().isEmpty());
    EXPECT_EQ(bare.theOutput(), nullptr);
    EXPECT_NE(bare.get_extension(), nullptr);
}

TEST_F(MeasurementTest, HasAnExtensionOfItsOwn)
{
    const HostMeasurement one;
    const HostMeasurement other;
    EXPECT_NE(one.get_extension(), other.get_extension());
    EXPECT_EQ(one.get_extension(), one.get_extension());
}

TEST_F(MeasurementTest, CopiesEveryField)
{
    HostMeasurement source;
    fill(source, &m_first, &m_second);
    const HostMeasurement copy(source);
    expectFilled(copy, &m_first, &m_second);
}

TEST_F(MeasurementTest, SharesItsExtensionWithCopies)
{
    const HostMeasurement source;
    const HostMeasurement copy(source);
    EXPECT_EQ(copy.get_extension(), source.get_extension());
}

TEST_F(MeasurementTest, KeepsACopyApartFromItsSource)
{
    HostMeasurement source;
    fill(source, &m_first, &m_second);
    const HostMeasurement copy(source);
    source.clear()->set_output(nullptr)->set_parameter_values({});
    source.set_name(QStringLiteral("other"));
    source.set_description(QString());
    source.set_parameters({});
    expectFilled(copy, &m_first, &m_second);
}

TEST_F(MeasurementTest, AssignsEveryField)
{
    HostMeasurement source;
    fill(source, &m_first, &m_second);
    HostMeasurement target(QStringLiteral("former"), QStringLiteral("Former"));
    target.set_parameter_values(doubles({1, 2, 3, 4}));
    target.push(&m_second);
    static_cast<Base&>(target) = source;
    expectFilled(target, &m_first, &m_second);
    expectFilled(source, &m_first, &m_second);
}

TEST_F(MeasurementTest, SharesItsExtensionByAssignmentAndLetsTheFormerGo)
{
    const HostMeasurement source;
    HostMeasurement target;
    const auto former = std::weak_ptr<void>(target.get_extension());
    static_cast<Base&>(target) = source;
    EXPECT_EQ(target.get_extension(), source.get_extension());
    EXPECT_TRUE(former.expired());
}

TEST_F(MeasurementTest, StaysWhatItIsWhenAssignedToItself)
{
    HostMeasurement measurement;
    fill(measurement, &m_first, &m_second);
    const auto extension = measurement.get_extension();
    Base& same = measurement;
    static_cast<Base&>(measurement) = same;
    expectFilled(measurement, &m_first, &m_second);
    EXPECT_EQ(measurement.get_extension(), extension);
}

TEST_F(MeasurementTest, AnswersAssignmentWithItself)
{
    const HostMeasurement source;
    HostMeasurement target;
    EXPECT_EQ(&(static_cast<Base&>(target) = source), &target);
}

TEST_F(MeasurementTest, AnswersEverySetterWithItself)
{
    HostMeasurement measurement;
    Base* const self = &measurement;
    EXPECT_EQ(measurement.push(&m_first), self);
    EXPECT_EQ(measurement.clear(), self);
    EXPECT_EQ(measurement.set_output(&m_second), self);
    EXPECT_EQ(measurement.set_parameter_values(doubles({1})), self);
    EXPECT_EQ(measurement.set_name(QStringLiteral("n")), self);
    EXPECT_EQ(measurement.set_description(QStringLiteral("d")), self);
    EXPECT_EQ(measurement.set_parameters({}), self);
}

TEST_F(MeasurementTest, TakesAChainOfSetters)
{
    HostMeasurement measurement;
    measurement.push(&m_second)
        ->clear()
        ->push(&m_first)
        ->push(nullptr)
        ->set_output(&m_second)
        ->set_parameter_values(doubles({3}));
    EXPECT_EQ(measurement.get_stack(), (QList<Variable*>{&m_first, nullptr}));
    EXPECT_EQ(measurement.output, &m_second);
    EXPECT_TRUE(sameValues(measurement.get_parameter_values(), doubles({3})));
}

TEST_F(MeasurementTest, PushesBehindWhatIsThereAndTakesNullAndRepetition)
{
    HostMeasurement measurement;
    measurement.push(&m_second)->push(nullptr)->push(&m_first)->push(&m_second);
    EXPECT_EQ(measurement.get_stack(), (QList<Variable*>{&m_second, nullptr, &m_first, &m_second}));
}

TEST_F(MeasurementTest, ShowsTheStackItself)
{
    HostMeasurement measurement;
    static_assert(std::is_same_v<decltype(measurement.get_stack()), const QList<Variable*>&>);
    const QList<Variable*>& stack = measurement.get_stack();
    EXPECT_EQ(&stack, &measurement.stack);
    measurement.push(&m_first);
    EXPECT_EQ(stack, (QList<Variable*>{&m_first}));
}

TEST_F(MeasurementTest, KeepsOutputAndValuesWhenCleared)
{
    HostMeasurement measurement;
    fill(measurement, &m_first, &m_second);
    measurement.clear();
    EXPECT_TRUE(measurement.get_stack().isEmpty());
    EXPECT_EQ(measurement.output, &m_second);
    EXPECT_TRUE(sameValues(measurement.get_parameter_values(), doubles({4.5, 5.5})));
    EXPECT_EQ(measurement.get_parameters().size(), 1);
}

TEST_F(MeasurementTest, ReplacesAllParameterValues)
{
    HostMeasurement measurement;
    measurement.set_parameter_values(doubles({1, 2, 3}));
    measurement.set_parameter_values({BVariant(), BVariant(7)});
    EXPECT_TRUE(sameValues(measurement.get_parameter_values(), {BVariant(), BVariant(7)}));
    measurement.set_parameter_values({});
    EXPECT_TRUE(measurement.get_parameter_values().empty());
}

TEST_F(MeasurementTest, KeepsItsValuesWhenGivenThemselves)
{
    HostMeasurement measurement;
    measurement.set_parameter_values(doubles({1, 2, 3}));
    const BVariant* const place = measurement.parameterValues.data();
    measurement.set_parameter_values(measurement.parameterValues);
    EXPECT_TRUE(sameValues(measurement.get_parameter_values(), doubles({1, 2, 3})));
    EXPECT_EQ(measurement.parameterValues.data(), place);
}

TEST_F(MeasurementTest, HandsOutCopiesOfItsParametersAndValues)
{
    HostMeasurement measurement;
    fill(measurement, &m_first, &m_second);
    Values values = measurement.get_parameter_values();
    values.clear();
    QList<IO::Parameter> parameters = measurement.get_parameters();
    parameters[0].name = QStringLiteral("changed");
    expectFilled(measurement, &m_first, &m_second);
}

TEST_F(MeasurementTest, LeavesValuesAloneWhenParametersAreDeclared)
{
    HostMeasurement measurement;
    measurement.set_parameter_values(doubles({1}));
    measurement.set_parameters(
        {{QStringLiteral("a"), QString(), BVariant(5.0)}, {QStringLiteral("b"), QString(), BVariant(6.0)}});
    EXPECT_EQ(measurement.get_parameters().size(), 2);
    EXPECT_TRUE(sameValues(measurement.get_parameter_values(), doubles({1})));
}

TEST_F(MeasurementTest, FindsAnyInputValidAndSaysNothing)
{
    HostMeasurement measurement;
    QString why = QStringLiteral("untouched");
    EXPECT_TRUE(measurement.is_valid(nullptr, why));
    EXPECT_TRUE(measurement.is_valid(&m_first, why));
    EXPECT_EQ(why, QStringLiteral("untouched"));
}

TEST_F(MeasurementTest, DestroysNoVariable)
{
    ConnectedClient first(m_first);
    ConnectedClient second(m_second);
    {
        HostMeasurement measurement;
        fill(measurement, &m_first, &m_second);
    }
    EXPECT_EQ(first.removals, 0);
    EXPECT_EQ(second.removals, 0);
    m_first.UpdateData(numbers({1}));
    EXPECT_EQ(first.updates, 1);
}

TEST_F(MeasurementTest, NumbersTheInputThatPolynomialsTake)
{
    static_assert(sizeof(IO::InputType) == 4 && sizeof(IO::ExpressionType) == 4);
    EXPECT_EQ(static_cast<int>(IO::InputType::Variable), 3);
}

TEST_F(MeasurementTest, StandsOnTheExtensionInterfaces)
{
    const HostMeasurement measurement;
    static_assert(std::is_base_of_v<Extensions::IExtender, Base>);
    static_assert(std::is_base_of_v<Extensions::IAbstractExtension,
                                    typename decltype(measurement.get_extension())::element_type>);
    EXPECT_NE(dynamic_cast<const Extensions::IExtender*>(&measurement), nullptr);
    EXPECT_NE(dynamic_cast<const Extensions::IAbstractExtension*>(measurement.get_extension().get()),
              nullptr);
}

// Hosts' own measurements are compiled against the places of the fields.
TEST_F(MeasurementTest, KeepsItsFieldsInTheirOrder)
{
    const HostMeasurement m;
    const std::vector<const void*> places = {
        &m.name,       &m.symbol,          &m.category, &m.description, &m.expressionType, &m.inputType,
        &m.parameters, &m.parameterValues, &m.stack,    &m.output,      &m.extension};
    for (std::size_t i = 1; i < places.size(); ++i)
        EXPECT_LT(places[i - 1], places[i]) << "field " << i;
}

} // namespace
} // namespace Orrery
