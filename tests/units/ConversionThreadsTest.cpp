// Threads that convert with the same units at once.

#include "units/Units.h"

#include "tests/support/RandomSeed.h"
#include "tests/support/Variants.h"
#include "tests/units/CatalogueRows.h"
#include "tests/units/PlainConversion.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <thread>

namespace Orrery {
namespace {
using namespace CatalogueTest;
using namespace ConversionTest;
using Brindle::Quay::BVariant;

/// Runs the work on two threads that begin together.
void runTwice(const std::function<void()>& work)
{
    std::atomic<int> waiting{2};
    const auto begin = [&] {
        --waiting;
        while (waiting > 0)
            std::this_thread::yield();
        work();
    };
    std::thread first(begin);
    std::thread second(begin);
    first.join();
    second.join();
}

class ConversionThreads : public ::testing::Test
{
protected:
    ConversionThreads()
        : m_random(TestSupport::RandomSeed{8}.engine())
        , m_values(conversionValues(m_random, 200))
    {
        for (const double value : m_values)
            m_expected.push_back(plainConversion(m_source, m_target, value));
    }

    std::mt19937_64 m_random;
    const Units m_source = catalogueUnit("dBm");
    const Units m_target = catalogueUnit("kW");
    std::vector<double> m_values;
    std::vector<double> m_expected;
    std::atomic<int> m_failures{0};
};

TEST_F(ConversionThreads, ShareUnitsForSingleNumbers)
{
    runTwice([this] {
        for (std::size_t i = 0; i < m_values.size(); ++i) {
            double real = 0.0;
            std::complex<double> pair;
            const std::complex<double> value(m_values[i], m_values[i]);
            if (m_source.ConvertTo(m_target, m_values[i], &real) != ER_SUCCESS ||
                m_source.ConvertTo(m_target, value, &pair) != ER_SUCCESS || !sameBits(m_expected[i], real) ||
                !sameBits(std::complex<double>(m_expected[i], m_expected[i]), pair))
                ++m_failures;
        }
    });
    EXPECT_EQ(m_failures, 0);
}

TEST_F(ConversionThreads, ShareUnitsAndDataForArrays)
{
    const BVariant data(m_values);
    runTwice([this, &data] {
        for (int i = 0; i < 50; ++i) {
            BVariant mine = data;
            BVariant result;
            if (m_source.ConvertTo(m_target, mine) != ER_SUCCESS ||
                m_source.ConvertedTo(m_target, data, &result) != ER_SUCCESS ||
                !sameBits(m_expected, TestSupport::ToElements<double>(result)))
                ++m_failures;
        }
    });
    EXPECT_EQ(m_failures, 0);
    EXPECT_TRUE(sameBits(m_values, TestSupport::ToElements<double>(data)));
}

TEST_F(ConversionThreads, ShareUnitsThatAreOfTheSameSIStringOrDontFit)
{
    const Units metre = unitOf("m");
    const Units inch = catalogueUnit("in");
    const Units second = unitOf("s");
    runTwice([&] {
        for (int i = 0; i < 200; ++i) {
            BVariant data(1.0);
            double result = 0.0;
            if (metre.ConvertTo(inch, data) != ER_SUCCESS ||
                metre.ConvertTo(second, data) != ER_INVALID_ARGUMENT ||
                metre.ConvertTo(second, 1.0, &result) != ER_INVALID_ARGUMENT)
                ++m_failures;
        }
    });
    EXPECT_EQ(m_failures, 0);
}

TEST_F(ConversionThreads, MayLookUnitsUpAtOnce)
{
    std::atomic<int> found{0};
    runTwice([&] {
        for (const CatalogueRow& row : catalogueRows()) {
            Units units;
            if (SystemOfUnits::instance().GetUnitsByName(row.key, &units) == ER_SUCCESS &&
                units.GetScale() == row.scale)
                ++found;
        }
    });
    EXPECT_EQ(found, 250);
}

TEST_F(ConversionThreads, MayCopyTheSameUnit)
{
    const Units inch = catalogueUnit("in"); // with its numbers in a child Function
    runTwice([&] {
        for (int i = 0; i < 500; ++i) {
            const Units copy(inch);
            Units assigned = m_source;
            assigned = inch;
            const std::unique_ptr<AbstractProperty> clone(inch.Clone());
            const auto* const cloned = dynamic_cast<const Units*>(clone.get());
            if (copy != inch || assigned != inch || !cloned || *cloned != inch ||
                copy.GetPropertyCount() != inch.GetPropertyCount())
                ++m_failures;
        }
    });
    EXPECT_EQ(m_failures, 0);
}

TEST_F(ConversionThreads, MayListUnitsAtOnce)
{
    const SystemOfUnits& catalogue = SystemOfUnits::instance();
    const Units inch = catalogueUnit("in");
    runTwice([&] {
        for (int i = 0; i < 30; ++i) {
            if (catalogue.GetUnits(UnitType::length).size() != 8 || catalogue.GetAllUnits().size() != 117)
                ++m_failures;
            const QList<Units> compatible = catalogue.GetCompatibleUnits(inch);
            if (compatible.size() != 8 || compatible.front() != inch)
                ++m_failures;
        }
    });
    EXPECT_EQ(m_failures, 0);
}

TEST(CatalogueThreads, GetOneCatalogueFromTheirFirstCalls)
{
    // CTest runs this in a process of its own, where nothing has asked for the catalogue before
    std::atomic<SystemOfUnits*> seen[2] = {{nullptr}, {nullptr}};
    std::atomic<int> next{0};
    runTwice([&] { seen[next++] = &SystemOfUnits::instance(); });
    EXPECT_EQ(seen[0].load(), seen[1].load());
    EXPECT_EQ(seen[0].load()->GetAllUnits().size(), 117);
}
} // namespace
} // namespace Orrery
