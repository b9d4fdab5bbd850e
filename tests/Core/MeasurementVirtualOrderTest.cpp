#include "Core/FunctionProperty.h"
#include "Core/PolynomialMeasurement.h"
#include "foundations/property/Extensions.h"
#include "tests/Core/MeasurementTestSupport.h"
#include "tests/support/VirtualSlot.h"

#include <gtest/gtest.h>

// Hosts are compiled against the order of the virtual operations.

#if defined(__x86_64__) && defined(__GXX_ABI_VERSION)

namespace Orrery {
namespace {

using TestSupport::slotOf;

/// With one virtual operation more than Base: its slot is the number of those of Base.
template <class Base>
struct WithOneMore : Base
{
    virtual void more() = 0;
};

TEST(MeasurementVirtualOrder, OfAMeasurementStartsWithItsDestructor)
{
    using Base = Measurement<Variable>;
    EXPECT_EQ(slotOf(&Base::get_name), 2);
    EXPECT_EQ(slotOf(&Base::make_probe), 3);
    EXPECT_EQ(slotOf(&Base::clone), 4);
    EXPECT_EQ(slotOf(&Base::is_valid), 5);
    EXPECT_EQ(slotOf(&WithOneMore<Base>::more), 6);
}

TEST(MeasurementVirtualOrder, OfAPolynomialIsThatOfEveryMeasurement)
{
    using Cubic = PolynomialMeasurement<3>;
    EXPECT_EQ(slotOf(&Cubic::get_name), 2);
    EXPECT_EQ(slotOf(&Cubic::make_probe), 3);
    EXPECT_EQ(slotOf(&Cubic::clone), 4);
    EXPECT_EQ(slotOf(&Cubic::is_valid), 5);
    EXPECT_EQ(slotOf(&WithOneMore<Cubic>::more), 6);
}

TEST(MeasurementVirtualOrder, OfAProbeIsItsDestructorAndItsRun)
{
    EXPECT_EQ(slotOf(&AbstractProbe::run), 2);
    EXPECT_EQ(slotOf(&WithOneMore<AbstractProbe>::more), 3);
    using ItsProbe = Probe<HostMeasurement, Variable, Variable>;
    EXPECT_EQ(slotOf(&ItsProbe::run), 2);
}

TEST(MeasurementVirtualOrder, OfTheExtensionInterfacesIsTheirDestructorAlone)
{
    EXPECT_EQ(slotOf(&WithOneMore<Extensions::IExtender>::more), 2);
    EXPECT_EQ(slotOf(&WithOneMore<Extensions::IAbstractExtension>::more), 2);
    using ItsExtension = std::remove_reference_t<decltype(*HostMeasurement().get_extension())>;
    EXPECT_EQ(slotOf(&WithOneMore<ItsExtension>::more), 2);
}

TEST(MeasurementVirtualOrder, OfAFunctionIsThatOfEveryFolder)
{
    EXPECT_EQ(slotOf(&Function::PropertyObjType), 0);
    EXPECT_EQ(slotOf(&Function::GetTypeFlags), 1);
    EXPECT_EQ(slotOf(&Function::OnDeserialization), 2);
    EXPECT_EQ(slotOf(&Function::DoClone), 5); // the destructor has two entries
    EXPECT_EQ(slotOf(&WithOneMore<Function>::more), 7);
}

TEST(MeasurementVirtualOrder, OfACurveIsItsDestructorAndOneThatAnswersZero)
{
    EXPECT_EQ(slotOf(&Polynomial::kind), 2);
    EXPECT_EQ(slotOf(&WithOneMore<Polynomial>::more), 3);
    EXPECT_EQ(Polynomial().kind(), 0);
}

} // namespace
} // namespace Orrery

#endif
