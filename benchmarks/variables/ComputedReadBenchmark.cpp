// Reads of computed data, each beside what they are measured against, in one run.
//
//     clean read of a function variable       at most 5 times a look-up in a QMap of four keys
//     dirty read, an argument of 10 elements  beside what it can't do without: clones of measurement and probe, one
//                                             call of apply
#include "Core/FunctionProperty.h"
#include "Core/PolynomialMeasurement.h"
#include "foundations/variant/Variant.h"
#include "variables/ExplicitDataVar.h"
#include "variables/FunctionVar.h"

#include <benchmark/benchmark.h>

#include <QMap>
#include <QString>

#include <memory>
#include <thread>
#include <vector>

namespace {
using namespace Orrery;

// Shared pointers and the C library take short cuts until a process has started its first thread; a host has.
const bool s_threaded = [] {
    std::thread([] {}).join();
    return true;
}();

BVariant tenValues()
{
    return BVariant(std::vector<double>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
}

/// An argument and a polynomial over it, side by side in one folder.
struct Computed
{
    PropertyObject folder;
    ExplicitDataVar* argument = new ExplicitDataVar(QStringLiteral("argument"));
    FunctionVar* result = new FunctionVar(QStringLiteral("result"));

    Computed()
    {
        folder.InsertProperty(argument);
        folder.InsertProperty(result);
        argument->UpdateData(tenValues());
        auto* function = new Function(QStringLiteral("polynomial-1"));
        function->SetParameters({BVariant(0.0), BVariant(1.0)});
        result->SetFunction(function);
        result->AddArgumentRef(argument);
        result->GetData();
    }
};

void BM_LookUpInMapOfFour(benchmark::State& state)
{
    QMap<QString, int> map;
    for (const char* key : {"Arguments", "Data", "Function", "VariableStrategy"})
        map.insert(QLatin1String(key), 1);
    const QString key = QStringLiteral("Data");
    for (auto _ : state)
        benchmark::DoNotOptimize(map.value(key));
}
BENCHMARK(BM_LookUpInMapOfFour);

void BM_CleanRead(benchmark::State& state)
{
    const Computed computed;
    for (auto _ : state)
        benchmark::DoNotOptimize(computed.result->GetData());
}
BENCHMARK(BM_CleanRead);

void BM_CleanReadOfOneOffset(benchmark::State& state)
{
    const Computed computed;
    BVariant value;
    for (auto _ : state) {
        computed.result->GetValueAt(&value, 3);
        benchmark::DoNotOptimize(value);
    }
}
BENCHMARK(BM_CleanReadOfOneOffset);

void BM_BareRun(benchmark::State& state)
{
    const PolynomialMeasurement<1> pattern;
    Variable input;
    input.UpdateData(tenValues());
    Variable output;
    for (auto _ : state) {
        const std::unique_ptr<Measurement<Variable>> clone(pattern.clone());
        clone->push(&input)->set_output(&output);
        const std::unique_ptr<AbstractProbe> probe(clone->make_probe());
        benchmark::DoNotOptimize(probe->run());
    }
}
BENCHMARK(BM_BareRun);

// Each run keeps its clone for good, so their number is fixed.
void BM_DirtyRead(benchmark::State& state)
{
    const Computed computed;
    const BVariant data = tenValues();
    for (auto _ : state) {
        computed.argument->UpdateData(data);
        benchmark::DoNotOptimize(computed.result->GetData());
    }
}
BENCHMARK(BM_DirtyRead)->Iterations(200000);

} // namespace
