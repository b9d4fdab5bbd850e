// Threads that copy the same folder of plain values at once.
#include "foundations/property/PropertyObject.h"
#include "foundations/property/SimpleProperty.h"

#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <string>
#include <vector>

namespace Orrery {
namespace {

/// Three values, and a folder with one more.
std::unique_ptr<PropertyObject> makePlain()
{
    auto top = std::make_unique<PropertyObject>(QStringLiteral("top"));
    for (const char* name : {"a", "b", "c"})
        top->SetProperty(QString::fromLatin1(name), BVariant(std::vector<double>{1, 2, 3}));
    auto inner = std::make_unique<PropertyObject>(QStringLiteral("inner"));
    inner->SetProperty(QStringLiteral("d"), BVariant(4.0));
    if (top->InsertProperty(inner.get()) >= 0)
        static_cast<void>(inner.release());
    return top;
}

bool isWhole(PropertyObject& copy)
{
    auto* const inner = copy.GetPtr<PropertyObject>(QStringLiteral("inner"));
    const auto* const value = copy.GetPtr<SimpleProperty>(QStringLiteral("c"));
    return copy.GetPropertyCount() == 4 && value && value->GetValue().elementCount() == 3 && inner &&
           inner->GetPropertyCount() == 1 && inner->GetParent() == &copy;
}

using Copy = std::unique_ptr<PropertyObject> (*)(const PropertyObject& source);

std::unique_ptr<PropertyObject> construct(const PropertyObject& source)
{
    return std::make_unique<PropertyObject>(source);
}

std::unique_ptr<PropertyObject> assign(const PropertyObject& source)
{
    auto copy = std::make_unique<PropertyObject>();
    *copy = source;
    return copy;
}

std::unique_ptr<PropertyObject> clone(const PropertyObject& source)
{
    return std::unique_ptr<PropertyObject>(dynamic_cast<PropertyObject*>(source.Clone()));
}

class CopyAtOnce : public testing::TestWithParam<Copy>
{
};

// To copy plain values is to read them: nothing is noted in the source.
TEST_P(CopyAtOnce, OfPlainValuesIsWholeOnEachThread)
{
    const std::unique_ptr<PropertyObject> source = makePlain();
    std::promise<void> begin;
    const std::shared_future<void> begun(begin.get_future());
    const auto copyOften = [&source, begun] {
        begun.wait();
        for (int i = 0; i < 200; ++i) {
            const std::unique_ptr<PropertyObject> copy = GetParam()(*source);
            if (!copy || !isWhole(*copy))
                return false;
        }
        return true;
    };
    auto one = std::async(std::launch::async, copyOften);
    auto other = std::async(std::launch::async, copyOften);
    begin.set_value();
    EXPECT_TRUE(one.get());
    EXPECT_TRUE(other.get());
}

std::string nameOfWay(const testing::TestParamInfo<Copy>& test)
{
    const char* const names[] = {"Construct", "Assign", "Clone"};
    return names[test.index];
}

INSTANTIATE_TEST_SUITE_P(Ways, CopyAtOnce, testing::Values(&construct, &assign, &clone), &nameOfWay);

} // namespace
} // namespace Orrery
