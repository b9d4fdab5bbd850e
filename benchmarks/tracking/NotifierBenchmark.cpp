// An emission through the guard of the notifier beside the bare signal of the same object with the same
// receivers, and what a read of data costs that are clean.
//
//     an emission to 10 receivers    at most 1.2 times the bare signal
//     a clean read                   at most 5 times a look-up in a QMap of four keys

#include "tracking/Notifier.h"
#include "tracking/SlotNotifyable.h"
#include "variables/Variable.h"

#include <QMap>
#include <QString>
#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <thread>
#include <vector>

namespace {
using Brindle::Quay::BVariant;
using Orrery::Variable;

// Shared pointers and the C library take short cuts until a process has started its first thread; a host has.
const bool s_threaded = [] {
    std::thread([] {}).join();
    return true;
}();

class CountingClient : public Orrery::ISlotNotifyable
{
public:
    ISlotNotifyable& Update() override
    {
        ++count;
        return *this;
    }

    std::int64_t count = 0;
};

/// Times one emission to so many receivers, connected directly.
template <class Emit>
void emitToReceivers(benchmark::State& state, Emit emitOn)
{
    const Variable variable(QStringLiteral("x"));
    std::vector<std::unique_ptr<CountingClient>> clients(static_cast<std::size_t>(state.range(0)));
    for (auto& client : clients) {
        client = std::make_unique<CountingClient>();
        client->ConnectTo(variable, Qt::DirectConnection);
    }
    Variable::Notifier& notifier = *variable.getNotifier();
    for (auto _ : state)
        emitOn(notifier);
    for (const auto& client : clients) {
        if (client->count != static_cast<std::int64_t>(state.iterations()))
            state.SkipWithError("a receiver has missed an emission");
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_EmitBareSignal(benchmark::State& state)
{
    emitToReceivers(state, [](Variable::Notifier& notifier) { notifier.Modified(); });
}

void BM_EmitThroughGuard(benchmark::State& state)
{
    emitToReceivers(state, [](Variable::Notifier& notifier) { notifier.Modify(); });
}

void BM_LookUpInQMapOfFour(benchmark::State& state)
{
    QMap<QString, int> map;
    const QString names[] = {QStringLiteral("Data"), QStringLiteral("Indep"), QStringLiteral("Unit"),
                             QStringLiteral("VariableStrategy")};
    for (int i = 0; i < 4; ++i)
        map.insert(names[i], i);
    std::size_t next = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(map.constFind(names[next++ % 4]).value());
}

void BM_CleanRead(benchmark::State& state)
{
    const Variable variable(QStringLiteral("x"), BVariant(std::vector<double>(1000, 1.5)));
    variable.GetData();
    for (auto _ : state) {
        auto data = variable.GetData();
        benchmark::DoNotOptimize(data);
    }
    if (variable.getDirtyTracker()->getUpdateCount() != 1)
        state.SkipWithError("the data weren't clean");
}

void BM_ReadAfterQuietUpdate(benchmark::State& state)
{
    Variable variable(QStringLiteral("x"));
    const BVariant value(1.5);
    for (auto _ : state) {
        variable.UpdateData(value, /*notify=*/false);
        auto data = variable.GetData();
        benchmark::DoNotOptimize(data);
    }
}

} // namespace

BENCHMARK(BM_EmitBareSignal)->Arg(0)->Arg(1)->Arg(10)->Arg(1000);
BENCHMARK(BM_EmitThroughGuard)->Arg(0)->Arg(1)->Arg(10)->Arg(1000);
BENCHMARK(BM_LookUpInQMapOfFour);
BENCHMARK(BM_CleanRead);
BENCHMARK(BM_ReadAfterQuietUpdate);
