// What the library has done by the time a host's main() runs.
#include "Core/FunctionProperty.h"
#include "Core/PolynomialMeasurement.h"
#include "foundations/property/PropertyObjectFactory.h"
#include "tests/Core/MeasurementTestSupport.h"

#include <gtest/gtest.h>

#include <typeinfo>

namespace Orrery {
namespace {

// Read before main(): a host's own initialisers may rely on the library's.
const bool s_functionWasKnown = PropertyObjectFactory::Instance().IsRegistered(QStringLiteral("Function"));
const QStringList s_categories = Manager::Instance()->GetCategories();
const MeasurementList s_measurements = Manager::Instance()->GetMeasurements(QStringLiteral("Math"));
const QString s_nameKey = Function::sFunctionName();
const QString s_valuesKey = Function::sParameters();

const QString s_math = QStringLiteral("Math");

TEST(MeasurementLoadTime, HasMadeTheFactoryKnowFunctions)
{
    EXPECT_TRUE(s_functionWasKnown);
    EXPECT_EQ(s_nameKey, QStringLiteral("Function"));
    EXPECT_EQ(s_valuesKey, QStringLiteral("Parameters"));
}

TEST(MeasurementLoadTime, HasRegisteredThePolynomialsInTheirOrder)
{
    EXPECT_EQ(s_categories, QStringList{s_math});
    ASSERT_EQ(s_measurements.size(), 3);
    const Measurement<Variable>& first = *s_measurements[0];
    const Measurement<Variable>& second = *s_measurements[1];
    const Measurement<Variable>& third = *s_measurements[2];
    EXPECT_EQ(typeid(first), typeid(PolynomialMeasurement<1>));
    EXPECT_EQ(typeid(second), typeid(PolynomialMeasurement<2>));
    EXPECT_EQ(typeid(third), typeid(PolynomialMeasurement<3>));
    EXPECT_TRUE(sameValues(second.get_parameter_values(), doubles({0, 0, 1})));
}

TEST(MeasurementLoadTime, HasMadeThePolynomialsFindable)
{
    for (int degree = 1; degree <= 3; ++degree) {
        const QString name = QStringLiteral("polynomial-") + QString::number(degree);
        const auto* measurement = Manager::Instance()->FindMeasurement(name);
        EXPECT_EQ(measurement, Manager::Instance()->GetMeasurement(s_math, name));
        EXPECT_EQ(measurement, s_measurements.value(degree - 1));
    }
}

} // namespace
} // namespace Orrery
