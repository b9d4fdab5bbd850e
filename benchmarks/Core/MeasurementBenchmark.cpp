// Names resolved to measurements, and what a Function costs, each beside what it is measured against, in one run.
//
//     FindMeasurement      beside a look-up in one bare QMap with the same names
//     SetFunctionName      beside a bare walk over the same measurements: each may answer with any name at any time, so
//                          that all have to be asked
//     GetParameters        beside the copy of a std::vector with the same values
//     Clone of a Function  beside that of a plain folder with the same children
#include "Core/FunctionProperty.h"
#include "Core/MeasurementManager.h"
#include "foundations/variant/Variant.h"

#include <benchmark/benchmark.h>

#include <QMap>
#include <QString>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <thread>
#include <vector>

namespace {
using Brindle::Quay::BVariant;
using Orrery::AbstractProperty;
using Orrery::Function;
using Orrery::Measurement;
using Orrery::MeasurementManager;
using Orrery::PropertyObject;
using Orrery::Variable;

// Shared pointers and the C library take short cuts until a process has started its first thread; a host has.
const bool s_threaded = [] {
    std::thread([] {}).join();
    return true;
}();

/// The least that a host has to write.
class NamedMeasurement final : public Measurement<Variable>
{
public:
    NamedMeasurement(const QString& itsCategory, const QString& itsName)
    {
        category = itsCategory;
        set_name(itsName);
    }

    QString get_name() override { return name; }
    Orrery::AbstractProbe* make_probe() override
    {
        return new Orrery::Probe<NamedMeasurement, Variable, Variable>(this);
    }
    Measurement<Variable>* clone() const override { return new NamedMeasurement(*this); }
    Variable* apply(Variable* input) { return input; }
};

QString nameOf(std::int64_t number)
{
    return QStringLiteral("measurement-%1").arg(number, 6, 10, QLatin1Char('0'));
}

/// So many measurements, spread evenly over categories that come before the library's own.
class Registered
{
public:
    Registered(std::int64_t count, std::int64_t categories)
    {
        for (std::int64_t i = 0; i < count; ++i) {
            const QString category = QStringLiteral("Bench-%1").arg(i % categories, 4, 10, QLatin1Char('0'));
            m_owned.push_back(std::make_unique<NamedMeasurement>(category, nameOf(i)));
            manager().Register(m_owned.back().get());
        }
    }

    Registered(const Registered&) = delete;
    Registered& operator=(const Registered&) = delete;

    ~Registered()
    {
        for (const QString& category : manager().GetCategories()) {
            if (category.startsWith(QStringLiteral("Bench-")))
                manager().RemoveCategory(category);
        }
    }

    static MeasurementManager<Variable>& manager() { return *MeasurementManager<Variable>::Instance(); }

    const std::vector<std::unique_ptr<NamedMeasurement>>& all() const { return m_owned; }

private:
    std::vector<std::unique_ptr<NamedMeasurement>> m_owned;
};

/// Names all over the range, so that neighbours don't share their way through a map.
std::vector<QString> someNames(std::int64_t count)
{
    std::vector<QString> names;
    for (std::int64_t i = 0; i < 1000; ++i)
        names.push_back(nameOf(i * 7919 % count));
    return names;
}

void expect(bool holds)
{
    if (!holds)
        std::abort();
}

void BM_LookUpInQMap(benchmark::State& state)
{
    const Registered registered(state.range(0), 1);
    QMap<QString, Measurement<Variable>*> map;
    for (const auto& measurement : registered.all())
        map.insert(measurement->get_name(), measurement.get());
    const std::vector<QString> names = someNames(state.range(0));
    std::size_t next = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(map.value(names[next++ % names.size()]));
}
BENCHMARK(BM_LookUpInQMap)->Arg(10)->Arg(1000)->Arg(100000);

void BM_FindMeasurement(benchmark::State& state)
{
    const Registered registered(state.range(0), state.range(1));
    const std::vector<QString> names = someNames(state.range(0));
    auto& manager = Registered::manager();
    expect(manager.FindMeasurement(nameOf(3)) == registered.all()[3].get());
    std::size_t next = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(manager.FindMeasurement(names[next++ % names.size()]));
}
BENCHMARK(BM_FindMeasurement)
    ->ArgNames({"", "categories"})
    ->Args({10, 1})
    ->Args({1000, 1})
    ->Args({100000, 1})
    ->Args({1000, 10})
    ->Args({100000, 10});

void BM_BareWalk(benchmark::State& state)
{
    const Registered registered(state.range(0), 1);
    const QString name = nameOf(state.range(0) / 2);
    for (auto _ : state) {
        const Measurement<Variable>* found = nullptr;
        for (const auto& measurement : registered.all()) {
            if (static_cast<Measurement<Variable>&>(*measurement).get_name() == name)
                found = measurement.get();
        }
        const std::unique_ptr<Measurement<Variable>> copy(found->clone());
        benchmark::DoNotOptimize(copy.get());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_BareWalk)->Arg(10)->Arg(1000)->Arg(100000);

// A new Function each time: one that has a measurement already lets it go for good.
void BM_MakeFunction(benchmark::State& state)
{
    for (auto _ : state) {
        const Function function;
        benchmark::DoNotOptimize(&function);
    }
}
BENCHMARK(BM_MakeFunction);

void BM_MakeFunctionAndSetFunctionName(benchmark::State& state)
{
    const Registered registered(state.range(0), 1);
    const QString name = nameOf(state.range(0) / 2);
    for (auto _ : state) {
        Function function;
        expect(function.SetFunctionName(name) >= 0);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_MakeFunctionAndSetFunctionName)->Arg(10)->Arg(1000)->Arg(100000);

std::vector<BVariant> countingUp(std::int64_t count)
{
    std::vector<BVariant> values;
    for (std::int64_t i = 0; i < count; ++i)
        values.emplace_back(static_cast<double>(i));
    return values;
}

void BM_CopyVector(benchmark::State& state)
{
    const std::vector<BVariant> values = countingUp(state.range(0));
    for (auto _ : state) {
        const std::vector<BVariant> copy(values);
        benchmark::DoNotOptimize(copy.data());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_CopyVector)->Arg(4)->Arg(1000);

void BM_GetParameters(benchmark::State& state)
{
    Function function;
    function.SetParameters(countingUp(state.range(0)));
    expect(function.GetParameters().size() == static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        const std::vector<BVariant> values = function.GetParameters();
        benchmark::DoNotOptimize(values.data());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_GetParameters)->Arg(4)->Arg(1000);

void clone(benchmark::State& state, const PropertyObject& folder)
{
    for (auto _ : state) {
        const std::unique_ptr<AbstractProperty> copy(folder.Clone());
        benchmark::DoNotOptimize(copy.get());
    }
}

void BM_ClonePlainFolder(benchmark::State& state)
{
    Function function;
    function.SetParameters(countingUp(state.range(0)));
    clone(state, PropertyObject(function));
}
BENCHMARK(BM_ClonePlainFolder)->Arg(4)->Arg(1000);

void BM_CloneFunction(benchmark::State& state)
{
    Function function(QStringLiteral("polynomial-3"));
    function.SetParameters(countingUp(state.range(0)));
    expect(function.GetMeasurement() != nullptr);
    clone(state, function);
}
BENCHMARK(BM_CloneFunction)->Arg(4)->Arg(1000);

} // namespace
