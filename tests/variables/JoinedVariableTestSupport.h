#pragma once

#include "foundations/variant/Variant.h"
#include "tests/foundations/storage/CompareTrees.h"
#include "tests/support/ElementTypes.h"
#include "tests/support/Failures.h"
#include "tests/support/RandomSeed.h"
#include "tests/tracking/ChangeTestSupport.h"
#include "tests/variables/VariableTestSupport.h"
#include "variables/Variable.h"

#include <QStringList>

#include <cstdint>
#include <functional>
#include <memory>
#include <ostream>
#include <random>
#include <stdexcept>
#include <utility>
#include <vector>

/// What the tests of ranges, concatenations and sweeps share.
namespace Orrery::JoinTest {

using TestSupport::Failure;
using TestSupport::failureOf;
using TestSupport::Sizes;
using Doubles = std::vector<double>;

constexpr std::uint64_t largest = ~std::uint64_t{0};

inline QString numbered(const char* text, std::uint64_t number)
{
    return QString::fromLatin1(text) + QString::number(number);
}

/// What an output holds before a read.
inline BVariant untouched()
{
    return BVariant(std::string("untouched"));
}

/// What came of a read: the exception or the code, and what the output holds afterwards.
struct Reading
{
    ERESULT code = ER_SUCCESS;
    BVariant out;
    Failure failure{"none", ""};

    friend bool operator==(const Reading& a, const Reading& b)
    {
        return a.code == b.code && a.failure == b.failure && StorageTest::CompareValues(a.out, b.out).empty();
    }
    friend std::ostream& operator<<(std::ostream& stream, const Reading& reading)
    {
        return stream << "code " << reading.code << ", thrown " << reading.failure << ", output "
                      << TestSupport::Describe(reading.out);
    }
};

/// Run `read` on an output that holds something.
inline Reading readingOf(const std::function<ERESULT(BVariant*)>& read)
{
    Reading reading;
    reading.out = untouched();
    reading.failure = failureOf([&] { reading.code = read(&reading.out); });
    return reading;
}

inline Reading readAt(const Variable& variable, std::uint64_t offset)
{
    return readingOf([&](BVariant* out) { return variable.GetValueAt(out, offset); });
}

inline Reading readRange(const Variable& variable, std::uint64_t start, std::uint64_t end)
{
    return readingOf([&](BVariant* out) { return variable.GetValueRange(out, start, end); });
}

inline Reading readData(const Variable& variable)
{
    return readingOf([&](BVariant* out) {
        *out = variable.GetData();
        return ER_SUCCESS;
    });
}

inline Reading got(BVariant out)
{
    return {ER_SUCCESS, std::move(out)};
}

inline Reading gotNumbers(Doubles values)
{
    return got(BVariant(std::move(values)));
}

/// A read that left the output alone.
inline Reading refused(ERESULT code)
{
    return {code, untouched()};
}

/// A read that failed with this in the output.
inline Reading stopped(ERESULT code, BVariant out = {})
{
    return {code, std::move(out)};
}

inline Reading threw(Failure failure, BVariant out = untouched())
{
    return {ER_SUCCESS, std::move(out), std::move(failure)};
}

/// Whether a read ended with a std::length_error, whatever its words.
inline bool failsByLength(const Variable& variable, std::uint64_t start, std::uint64_t end)
{
    return readRange(variable, start, end).failure.type == "std::length_error";
}

/// A host's Variable: each operation does what a test has set for it, and what a Variable does where that isn't set.
class HostVariable : public Variable
{
public:
    using Variable::Variable;

    std::uint64_t GetMaxIndepOffset() const override
    {
        return count ? count() : Variable::GetMaxIndepOffset();
    }
    ERESULT GetValueAt(BVariant* out, std::uint64_t offset) const override
    {
        return at ? at(out, offset) : Variable::GetValueAt(out, offset);
    }
    ERESULT GetValueRange(BVariant* out, std::uint64_t start, std::uint64_t end) const override
    {
        return range ? range(out, start, end) : Variable::GetValueRange(out, start, end);
    }
    std::uint64_t GetElementDimCount() const override
    {
        return dimCount ? dimCount() : Variable::GetElementDimCount();
    }
    ERESULT GetElementShape(std::vector<std::uint64_t>* shape) const override
    {
        return elementShape ? elementShape(shape) : Variable::GetElementShape(shape);
    }
    unsigned int GetTypeFlags() const override { return Variable::GetTypeFlags() | moreFlags; }

    std::function<std::uint64_t()> count;
    std::function<ERESULT(BVariant*, std::uint64_t)> at;
    std::function<ERESULT(BVariant*, std::uint64_t, std::uint64_t)> range;
    std::function<std::uint64_t()> dimCount;
    std::function<ERESULT(std::vector<std::uint64_t>*)> elementShape;
    unsigned int moreFlags = 0;
};

inline Variable* insertData(PropertyObject& folder, const QString& name, BVariant data)
{
    return insert(folder, std::make_unique<Variable>(name, std::move(data)));
}

inline HostVariable* insertHost(PropertyObject& folder, const QString& name)
{
    return insert(folder, std::make_unique<HostVariable>(name));
}

/// The names of a folder's numbered children, in their order.
inline QStringList numberedNames(const PropertyObject& folder)
{
    QList<AbstractProperty*> children;
    folder.GetPrefixedChildrenProperties(&children, QString());
    QStringList names;
    for (const AbstractProperty* child : qAsConst(children))
        names.append(child->GetName());
    return names;
}

/// What is done per element type, picked by the code of the type.
struct TypeOperations
{
    BVariant (*random)(const Sizes& dimensions, DataOrdering ordering, std::mt19937_64& random);
    void (*set)(BVariant& array, std::uint64_t position, const BVariant& value);
};

template <class T>
BVariant randomElements(const Sizes& dimensions, DataOrdering ordering, std::mt19937_64& random)
{
    std::uint64_t count = dimensions.empty() ? 0 : 1;
    for (const std::uint64_t size : dimensions)
        count *= size;
    const std::vector<T> samples = TestSupport::sampleElements<T>(4);
    std::vector<T> elements;
    for (std::uint64_t i = 0; i < count; ++i)
        elements.push_back(samples[TestSupport::randomBelow(random, samples.size())]);
    return BVariant(std::move(elements), dimensions, ordering);
}

template <class T>
void setAt(BVariant& array, std::uint64_t position, const BVariant& value)
{
    Brindle::Quay::setElement<T>(array, {position}, value);
}

template <class... T>
TypeOperations findOperations(std::uint16_t code, ::testing::Types<T...>)
{
    TypeOperations found{};
    ((TestSupport::elementCode<T> == code
          ? static_cast<void>(found = TypeOperations{&randomElements<T>, &setAt<T>})
          : static_cast<void>(0)),
     ...);
    if (!found.random)
        throw std::out_of_range("no such element type");
    return found;
}

/// Errors: std::out_of_range for a code that is no element type.
inline TypeOperations operationsOf(std::uint16_t code)
{
    return findOperations(code, TestSupport::ElementTypes());
}

} // namespace Orrery::JoinTest
