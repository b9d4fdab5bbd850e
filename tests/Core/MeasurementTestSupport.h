#pragma once

#include "Core/Measurement.h"
#include "Core/MeasurementManager.h"
#include "tests/support/ElementTypes.h"
#include "tests/support/Failures.h"
#include "tests/support/Variants.h"
#include "tests/tracking/ChangeTestSupport.h"
#include "variables/Variable.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <memory>
#include <ostream>
#include <set>
#include <string>
#include <utility>
#include <vector>

/// GoogleTest shows a list of texts as such; found by argument-dependent lookup, hence in the global namespace.
inline void PrintTo(const QStringList& texts, std::ostream* out)
{
    *out << '{' << texts.join(QStringLiteral(", ")).toStdString() << '}';
}

namespace Orrery {

using TestSupport::Describe;
using TestSupport::failureOf;
using TestSupport::invalidArgument;
using TestSupport::MakeCounting;
using TestSupport::MakeVector;
using TestSupport::outOfRange;
using TestSupport::runtimeError;
using TestSupport::ToDoubles;

using Manager = MeasurementManager<Variable>;
using Values = std::vector<BVariant>;

/// What a measurement of a test does; copied with it, and out of the way of its fields.
struct HostHooks
{
    std::function<Variable*(Variable*)> onApply;
    std::function<void()> onClone;
};

/// A measurement as a host writes its own. The ones that live are known, and so are those that nobody owns.
class HostMeasurement : public Measurement<Variable>
{
public:
    explicit HostMeasurement(const QString& newName = QString(), const QString& newCategory = QString())
    {
        live().insert(this);
        name = newName;
        category = newCategory;
        expressionType = IO::ExpressionType::None;
        inputType = IO::InputType::None;
    }
    HostMeasurement(const HostMeasurement& other)
        : Measurement<Variable>(other)
        , hooks(other.hooks)
        , mark(other.mark)
    {
        live().insert(this);
    }
    HostMeasurement& operator=(const HostMeasurement& other) = default;
    ~HostMeasurement() override { live().erase(this); }

    QString get_name() override { return name; }
    AbstractProbe* make_probe() override { return new Probe<HostMeasurement, Variable, Variable>(this); }
    Measurement<Variable>* clone() const override
    {
        if (hooks.onClone)
            hooks.onClone();
        return new HostMeasurement(*this);
    }

    Variable* apply(Variable* input)
    {
        applied.push_back(input);
        return hooks.onApply ? hooks.onApply(input) : output;
    }

    // What a host's subclass may write.
    using Measurement<Variable>::set_description;
    using Measurement<Variable>::set_name;
    using Measurement<Variable>::set_parameters;
    using Measurement<Variable>::name;
    using Measurement<Variable>::symbol;
    using Measurement<Variable>::category;
    using Measurement<Variable>::description;
    using Measurement<Variable>::expressionType;
    using Measurement<Variable>::inputType;
    using Measurement<Variable>::parameters;
    using Measurement<Variable>::parameterValues;
    using Measurement<Variable>::stack;
    using Measurement<Variable>::output;
    using Measurement<Variable>::extension;

    HostHooks hooks;
    int mark = 0;                   ///< tells registered ones apart by their clones
    std::vector<Variable*> applied; ///< what apply has been called with; a clone starts anew

    /// All that live. Never destroyed: the registered ones go after the statics of a program.
    static std::set<const HostMeasurement*>& live()
    {
        static auto* const all = new std::set<const HostMeasurement*>;
        return *all;
    }
};

/// The mark of a measurement of this class; -1 for null and any other.
inline int markOf(const Measurement<Variable>* measurement)
{
    const auto* own = dynamic_cast<const HostMeasurement*>(measurement);
    return own ? own->mark : -1;
}

/// Ends with the registry as it was, and destroys each HostMeasurement that a test has left behind: what the
/// manager or a Function lets go of without destroying it belongs to nobody.
class RegistryTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_categories = manager().GetCategories();
        ASSERT_TRUE(HostMeasurement::live().empty()) << "another test has left something behind";
    }

    void TearDown() override
    {
        for (const QString& category : manager().GetCategories()) {
            if (!m_categories.contains(category))
                manager().RemoveCategory(category);
        }
        while (!HostMeasurement::live().empty()) {
            const HostMeasurement* const left = *HostMeasurement::live().begin();
            manager().RemoveCategory(left->category); // what a removal has left of it by name goes only so
            delete left;
        }
    }

    static Manager& manager() { return *Manager::Instance(); }

    /// Registers a new one; the manager owns it.
    static HostMeasurement* add(const QString& category, const QString& name, int mark = 0)
    {
        auto* made = new HostMeasurement(name, category);
        made->mark = mark;
        EXPECT_EQ(manager().Register(made), ER_SUCCESS);
        return made;
    }

    /// How many live, registered or not.
    static int liveCount() { return static_cast<int>(HostMeasurement::live().size()); }

private:
    QStringList m_categories;
};

using MeasurementList = QList<Measurement<Variable>*>;

inline MeasurementList listOf(std::initializer_list<Measurement<Variable>*> measurements)
{
    return MeasurementList(measurements);
}

inline Values doubles(std::initializer_list<double> numbers)
{
    Values values;
    for (const double number : numbers)
        values.emplace_back(number);
    return values;
}

/// Same count, and at each position the same type, shape and elements.
inline ::testing::AssertionResult sameValues(const Values& actual, const Values& expected)
{
    if (actual.size() != expected.size())
        return ::testing::AssertionFailure() << actual.size() << " values, not " << expected.size();
    for (std::size_t i = 0; i < actual.size(); ++i) {
        if (!exactlyEqual(actual[i], expected[i]) || actual[i].isScalar() != expected[i].isScalar())
            return ::testing::AssertionFailure()
                   << "value " << i << " is " << Describe(actual[i]) << ", not " << Describe(expected[i]);
    }
    return ::testing::AssertionSuccess();
}

} // namespace Orrery
