// A file of many Variables with units and a common axis: to open it beside h5py listing it, and to its first value.
//
// The peer is a process of its own that prints the seconds it needs, without its start, to open the file and to
// collect name, shape, type and units of every dataset, which an open gives as well. The limit for an open is a twentieth of it; for the first value, 1 ms on top of that.
#include "benchmarks/foundations/storage/BenchmarkFiles.h"
#include "units/Units.h"
#include "variables/Variable.h"

#include <benchmark/benchmark.h>

#include <QProcess>

#include <chrono>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <vector>

namespace {

using namespace Orrery;
using namespace Orrery::StorageBenchmark;
using Brindle::Quay::BVariant;

constexpr std::size_t s_elements = 1000;

Variable* AddVariable(PropertyObject& root, const QString& name, const QString& units, double first)
{
    auto variable = std::make_unique<Variable>(name, BVariant(std::vector<double>(s_elements, first)));
    if (variable->SetUnits(Units::FromSIString(units)) < 0 || root.InsertProperty(variable.get()) < 0)
        throw std::runtime_error("a variable can't be put in");
    return variable.release();
}

void Build(PropertyObject& root, std::int64_t variables)
{
    const Variable* const axis = AddVariable(root, QStringLiteral("Time"), QStringLiteral("s"), 0.0);
    for (std::int64_t i = 0; i < variables; ++i) {
        Variable* const variable =
            AddVariable(root, QStringLiteral("V%1").arg(i), QStringLiteral("V"), static_cast<double>(i));
        if (variable->AddIndepVariableRef(axis) < 0)
            throw std::runtime_error("an axis can't be set");
    }
}

class VariableFile
{
public:
    explicit VariableFile(std::int64_t variables)
    {
        const auto file = Open(Path(), DataFile::Create);
        Build(*file->GetRoot(), variables);
        Save(*file);
    }
    QString Path() const { return m_folder.Path(QStringLiteral("variables.h5")); }

private:
    Folder m_folder;
};

// Making the tree is what is timed; destroying it isn't.
void OpenVariables(benchmark::State& state)
{
    const VariableFile stored(state.range(0));
    for (auto _ : state) {
        std::shared_ptr<DataFile> file = Open(stored.Path(), DataFile::ReadOnly);
        state.PauseTiming();
        file.reset();
        state.ResumeTiming();
    }
}

void FirstValue(benchmark::State& state)
{
    const VariableFile stored(state.range(0));
    for (auto _ : state) {
        const std::shared_ptr<DataFile> file = Open(stored.Path(), DataFile::ReadOnly);
        const auto* const variable = file->GetRoot()->GetPtr<Variable>(QStringLiteral("V5000"));
        const auto begin = std::chrono::steady_clock::now();
        BVariant value;
        if (!variable || variable->GetValueAt(&value, 7) < 0)
            state.SkipWithError("the value can't be read");
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
        state.SetIterationTime(time.count());
    }
}

void H5pyListing(benchmark::State& state)
{
    static const char* const script = "import h5py, sys, time\n"
                                      "begin = time.perf_counter()\n"
                                      "with h5py.File(sys.argv[1], 'r') as file:\n"
                                      "    found = []\n"
                                      "    def look(name, item):\n"
                                      "        if isinstance(item, h5py.Dataset):\n"
                                      "            found.append((name, item.shape, item.dtype,\n"
                                      "                          item.attrs.get('units')))\n"
                                      "    file.visititems(look)\n"
                                      "print(time.perf_counter() - begin)\n";
    const VariableFile stored(state.range(0));
    for (auto _ : state) {
        QProcess peer;
        peer.start(QStringLiteral("/usr/bin/python3"),
                   {QStringLiteral("-c"), QString::fromLatin1(script), stored.Path()});
        bool isNumber = false;
        double seconds = 0.0;
        if (peer.waitForFinished(-1))
            seconds = QString::fromLatin1(peer.readAllStandardOutput()).trimmed().toDouble(&isNumber);
        if (!isNumber)
            state.SkipWithError("h5py can't be run");
        state.SetIterationTime(seconds);
    }
}

BENCHMARK(OpenVariables)->ArgName("variables")->Arg(1000)->Arg(10'000)->Unit(benchmark::kMillisecond);
BENCHMARK(FirstValue)
    ->ArgName("variables")
    ->Arg(10'000)
    ->UseManualTime()
    ->Iterations(10)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(H5pyListing)
    ->ArgName("variables")
    ->Arg(10'000)
    ->UseManualTime()
    ->Iterations(2)
    ->Unit(benchmark::kMillisecond);

} // namespace
