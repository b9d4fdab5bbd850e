#pragma once

#include "Core/FunctionProperty.h"
#include "Core/Measurement.h"
#include "Core/MeasurementManager.h"
#include "tests/tracking/ChangeTestSupport.h"
#include "tests/variables/VariableTestSupport.h"
#include "variables/FunctionVar.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

namespace Orrery {

/// What has become of the clones and probes of one measurement.
struct Census
{
    std::atomic<int> runs{0};
    std::atomic<int> measurements{0}; ///< alive, the registered one included
    std::atomic<int> probes{0};       ///< alive
};

/// A host's measurement: what it does is a function, which is given the clone that runs.
class HostMeasurement : public Measurement<Variable>
{
public:
    /// Returns what the probe shall return.
    using Body = std::function<Variable*(HostMeasurement& run)>;

    HostMeasurement(const QString& inCategory, const QString& called, Body body)
        : m_body(std::move(body))
        , m_census(std::make_shared<Census>())
    {
        category = inCategory;
        set_name(called);
        ++m_census->measurements;
    }
    HostMeasurement(const HostMeasurement& other)
        : Measurement<Variable>(other)
        , m_body(other.m_body)
        , m_census(other.m_census)
    {
        ++m_census->measurements;
    }
    HostMeasurement& operator=(const HostMeasurement&) = delete;
    ~HostMeasurement() override { --m_census->measurements; }

    QString get_name() override { return name; }
    AbstractProbe* make_probe() override;
    Measurement<Variable>* clone() const override { return new HostMeasurement(*this); }

    Variable* target() const { return output; }
    Variable* argument(int i) const { return stack.at(i); }
    double parameter(std::size_t i) const { return ToDoubles(parameterValues.at(i)).at(0); }

    Variable* run()
    {
        ++m_census->runs;
        return m_body(*this);
    }

    const std::shared_ptr<Census>& census() const { return m_census; }

private:
    Body m_body;
    std::shared_ptr<Census> m_census;
};

class HostProbe : public AbstractProbe
{
public:
    explicit HostProbe(HostMeasurement& measurement)
        : m_measurement(measurement)
        , m_census(measurement.census())
    {
        ++m_census->probes;
    }
    HostProbe(const HostProbe&) = delete;
    HostProbe& operator=(const HostProbe&) = delete;
    ~HostProbe() override { --m_census->probes; }

    Variable* run(void* /*argument*/) override { return m_measurement.run(); }

private:
    HostMeasurement& m_measurement;
    std::shared_ptr<Census> m_census;
};

inline AbstractProbe* HostMeasurement::make_probe()
{
    return new HostProbe(*this);
}

/// A host's measurement in the catalogue, under a name and a category of its own, as long as this lives.
class RegisteredMeasurement
{
public:
    explicit RegisteredMeasurement(HostMeasurement::Body body)
        : m_number(++s_number)
    {
        auto pattern = std::make_unique<HostMeasurement>(QStringLiteral("host-category-%1").arg(m_number),
                                                         name(), std::move(body));
        m_census = pattern->census();
        m_pattern = pattern.get();
        MeasurementManager<Variable>::Instance()->Register(pattern.release());
    }
    RegisteredMeasurement(const RegisteredMeasurement&) = delete;
    RegisteredMeasurement& operator=(const RegisteredMeasurement&) = delete;
    ~RegisteredMeasurement() { forget(); }

    /// Take it out of the catalogue, as if this process didn't know it.
    void forget()
    {
        QList<QString> names{name()};
        qDeleteAll(MeasurementManager<Variable>::Instance()->RemoveMeasurements(names));
        m_pattern = nullptr;
    }

    QString name() const { return QStringLiteral("host-measurement-%1").arg(m_number); }
    HostMeasurement* pattern() const { return m_pattern; }
    const Census& census() const { return *m_census; }
    int runs() const { return m_census->runs; }

    /// A Function of this measurement, with these parameters.
    std::unique_ptr<Function> function(const std::vector<BVariant>& parameters = {}) const
    {
        auto made = std::make_unique<Function>(name());
        made->SetParameters(parameters);
        return made;
    }

    /// Give it to a function variable. Returns the Function, which the variable owns.
    template <class Holder>
    Function* giveTo(Holder& holder, const std::vector<BVariant>& parameters = {}) const
    {
        auto made = function(parameters);
        if (holder.SetFunction(made.get()) < 0)
            throw std::runtime_error("the Function can't be set");
        return made.release();
    }

private:
    static inline int s_number = 0;
    int m_number;
    HostMeasurement* m_pattern = nullptr;
    std::shared_ptr<Census> m_census;
};

/// The sum of all elements of all arguments, and of the parameters.
inline Variable* storeTotal(HostMeasurement& run)
{
    double total = 0;
    for (const Variable* argument : run.get_stack()) {
        for (const double value : ToDoubles(argument->GetData()))
            total += value;
    }
    for (const BVariant& parameter : run.get_parameter_values())
        total += ToDoubles(parameter).at(0);
    run.target()->UpdateData(numbers({total}));
    return run.target();
}

inline FunctionVarStrategy* functionStrategyOf(const Variable& variable)
{
    const auto strategy = variable.GetStrategyPtr().lock();
    return dynamic_cast<FunctionVarStrategy*>(strategy.get()); // the Variable keeps it
}

inline int updatesOf(const Variable& variable)
{
    return variable.getDirtyTracker()->getUpdateCount();
}

inline bool isClean(const Variable& variable)
{
    return variable.getDirtyTracker()->isClean();
}

inline bool isDirty(const Variable& variable)
{
    return variable.getDirtyTracker()->isDirty();
}

inline bool isUpdating(const Variable& variable)
{
    return variable.getDirtyTracker()->isUpdating();
}

/// How many living nodes it depends on.
inline std::size_t sourceCount(const Variable& variable)
{
    return variable.getDirtyTracker()->getSources()().size();
}

inline std::vector<double> stored(Variable& variable)
{
    return childDoubles(variable, QStringLiteral("Data"));
}

/// A tree with a function variable "f" that adds, and two variables "x" and "y" that hold 1 and 10.
class FunctionVarTest : public testing::Test
{
protected:
    PropertyObject top{QStringLiteral("top")};
    RegisteredMeasurement total{&storeTotal};
    FunctionVar* f = insert(top, std::make_unique<FunctionVar>(QStringLiteral("f")));
    Variable* x = insert(top, std::make_unique<Variable>(QStringLiteral("x"), numbers({1})));
    Variable* y = insert(top, std::make_unique<Variable>(QStringLiteral("y"), numbers({10})));

    /// f = x + y, read once.
    void setUpAndRead()
    {
        total.giveTo(*f);
        ASSERT_EQ(f->AddArgumentRef(x), ER_SUCCESS);
        ASSERT_EQ(f->AddArgumentRef(y), ER_SUCCESS);
        ASSERT_EQ(ToDoubles(f->GetData()), std::vector<double>{11});
        ASSERT_TRUE(isClean(*f));
    }
};

/// A function variable of a measurement that a test gives, over one variable "x" that holds 1.
class RunTest : public testing::Test
{
protected:
    PropertyObject top{QStringLiteral("top")};
    FunctionVar* f = insert(top, std::make_unique<FunctionVar>(QStringLiteral("f")));
    Variable* x = insert(top, std::make_unique<Variable>(QStringLiteral("x"), numbers({1})));
    std::unique_ptr<RegisteredMeasurement> measurement;

    /// The Function that f holds then.
    Function* measure(HostMeasurement::Body body)
    {
        measurement = std::make_unique<RegisteredMeasurement>(std::move(body));
        f->AddArgumentRef(x);
        return measurement->giveTo(*f);
    }
};

} // namespace Orrery
