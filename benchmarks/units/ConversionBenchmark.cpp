// Conversion and the catalogue of units, each beside UDUNITS-2 or a bare loop in the same run.
//
//     GetUnitsFromString, mean over the catalogue    at most 1/2 of ut_parse
//     one ConvertTo                                  at most one cv_convert_double of a held converter
//     ConvertedTo of 1e7, linear                     at most 1.1 times y = a*x + b into fresh memory
//     ConvertedTo of 1e7, dBm to W                   at most cv_convert_doubles
//
// The catalogue is built once in a process: BM_BuildCatalogue must run first, and tells so when it didn't.
#include "foundations/variant/Variant.h"
#include "units/SystemOfUnits.h"
#include "units/Units.h"

#include <benchmark/benchmark.h>

#include <udunits2.h>

#include <QByteArray>
#include <QSet>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace {
using Brindle::Quay::BVariant;
using Orrery::SystemOfUnits;
using Orrery::Units;
using Orrery::UnitType;

// ---- the peer -----------------------------------------------------------------------------------------------------

struct FreeUnit
{
    void operator()(ut_unit* unit) const { ut_free(unit); }
};
using PeerUnit = std::unique_ptr<ut_unit, FreeUnit>;

struct FreeConverter
{
    void operator()(cv_converter* converter) const { cv_free(converter); }
};
using PeerConverter = std::unique_ptr<cv_converter, FreeConverter>;

const ut_system* peerSystem()
{
    static ut_system* const system = [] {
        ut_set_error_message_handler(ut_ignore);
        return ut_read_xml(nullptr);
    }();
    return system;
}

PeerUnit peerUnit(const char* text)
{
    return PeerUnit(ut_parse(peerSystem(), text, UT_UTF8));
}

PeerConverter peerConverter(const char* from, const char* to)
{
    const PeerUnit source = peerUnit(from);
    const PeerUnit target = peerUnit(to);
    return PeerConverter(source && target ? ut_get_converter(source.get(), target.get()) : nullptr);
}

// ---- the catalogue ------------------------------------------------------------------------------------------------

bool s_isCatalogueBuilt = false;

SystemOfUnits& catalogue()
{
    s_isCatalogueBuilt = true;
    return SystemOfUnits::instance();
}

void BM_BuildCatalogue(benchmark::State& state)
{
    if (s_isCatalogueBuilt)
        state.SkipWithError("the catalogue has been built before");
    for (auto _ : state)
        benchmark::DoNotOptimize(&catalogue());
}
BENCHMARK(BM_BuildCatalogue)->Iterations(1)->Unit(benchmark::kMicrosecond);

QStringList catalogueNames()
{
    QStringList names;
    QSet<QString> typesSeen;
    const QList<Units> allUnits = catalogue().GetAllUnits();
    for (const Units& units : allUnits) {
        const UnitType& type = units.GetUnitType();
        if (typesSeen.contains(type.GetName()))
            continue;
        typesSeen.insert(type.GetName());
        names += catalogue().GetUnitNames(type);
    }
    return names;
}

void BM_PeerParseOverCatalogue(benchmark::State& state)
{
    std::vector<QByteArray> texts; // those that the peer knows, too; it lacks labels such as "dBm"
    const QStringList names = catalogueNames();
    for (const QString& name : names) {
        if (peerUnit(name.toUtf8().constData()))
            texts.push_back(name.toUtf8());
    }
    if (texts.empty()) {
        state.SkipWithError("UDUNITS knows none of the names");
        return;
    }
    std::size_t next = 0;
    for (auto _ : state) {
        const PeerUnit unit = peerUnit(texts[next].constData());
        benchmark::DoNotOptimize(unit.get());
        next = next + 1 == texts.size() ? 0 : next + 1;
    }
    state.counters["names"] = static_cast<double>(texts.size());
}
BENCHMARK(BM_PeerParseOverCatalogue);

void BM_GetUnitsFromString(benchmark::State& state)
{
    const QStringList names = catalogueNames();
    int next = 0;
    for (auto _ : state) {
        const Units units = catalogue().GetUnitsFromString(names.at(next));
        if (!units.IsValid())
            state.SkipWithError("a name of the catalogue isn't found");
        next = next + 1 == names.size() ? 0 : next + 1;
    }
    state.counters["names"] = static_cast<double>(names.size());
}
BENCHMARK(BM_GetUnitsFromString);

void BM_GetUnitsOfPower(benchmark::State& state)
{
    for (auto _ : state) {
        const QList<Units> units = catalogue().GetUnits(UnitType::power);
        if (units.size() != 8)
            state.SkipWithError("eight units of power are expected");
    }
}
BENCHMARK(BM_GetUnitsOfPower);

void BM_GetAllUnits(benchmark::State& state)
{
    for (auto _ : state) {
        const QList<Units> units = catalogue().GetAllUnits();
        if (units.size() != 117)
            state.SkipWithError("117 units are expected");
    }
}
BENCHMARK(BM_GetAllUnits)->Unit(benchmark::kMicrosecond);

// ---- one value ----------------------------------------------------------------------------------------------------

void BM_PeerConvertOne(benchmark::State& state)
{
    const PeerConverter converter = peerConverter("km", "m");
    double value = 1.25;
    for (auto _ : state) {
        benchmark::DoNotOptimize(value);
        double converted = cv_convert_double(converter.get(), value);
        benchmark::DoNotOptimize(converted);
    }
}
BENCHMARK(BM_PeerConvertOne);

void BM_ConvertTo(benchmark::State& state)
{
    const Units source = catalogue().GetUnitsFromString(QStringLiteral("km"));
    const Units target = catalogue().GetUnitsFromString(QStringLiteral("m"));
    double value = 1.25;
    double converted = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(value);
        if (source.ConvertTo(target, value, &converted) < 0)
            state.SkipWithError("km don't convert to m");
        benchmark::DoNotOptimize(converted);
    }
}
BENCHMARK(BM_ConvertTo);

void BM_PeerConvertOneFromDegrees(benchmark::State& state)
{
    const PeerConverter converter = peerConverter("celsius", "fahrenheit");
    double value = 1.25;
    for (auto _ : state) {
        benchmark::DoNotOptimize(value);
        double converted = cv_convert_double(converter.get(), value);
        benchmark::DoNotOptimize(converted);
    }
}
BENCHMARK(BM_PeerConvertOneFromDegrees);

void BM_ConvertToFromDegrees(benchmark::State& state)
{
    const Units source = catalogue().GetUnitsFromString(QStringLiteral("degC"));
    const Units target = catalogue().GetUnitsFromString(QStringLiteral("degF"));
    double value = 1.25;
    double converted = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(value);
        if (source.ConvertTo(target, value, &converted) < 0)
            state.SkipWithError("degC don't convert to degF");
        benchmark::DoNotOptimize(converted);
    }
}
BENCHMARK(BM_ConvertToFromDegrees);

// ---- arrays -------------------------------------------------------------------------------------------------------

struct Pair
{
    const char* from;
    const char* to;
    const char* peerFrom;
    const char* peerTo;
};
constexpr Pair s_pairs[] = {
    {"km", "m", "km", "m"},
    {"m", "in", "m", "inch"},
    {"degC", "degF", "celsius", "fahrenheit"},
    {"dBm", "W", "0.1 lg(re 1 mW)", "W"},
    {"W", "dBm", "W", "0.1 lg(re 1 mW)"},
};
constexpr std::int64_t s_length = 10'000'000;

/// Within -30 to 30, and positive where logarithms are taken.
std::vector<double> samples(bool arePositive)
{
    std::vector<double> values(static_cast<std::size_t>(s_length));
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = (arePositive ? 31.0 : 0.0) + 30.0 * std::sin(static_cast<double>(i));
    return values;
}

bool isToLogarithm(const Pair& pair)
{
    return QByteArray(pair.to) == "dBm";
}

void reportArrays(benchmark::State& state)
{
    state.SetItemsProcessed(state.iterations() * s_length);
    state.SetBytesProcessed(state.iterations() * s_length * 2 * static_cast<std::int64_t>(sizeof(double)));
}

using FreshMemory = std::unique_ptr<double[], decltype(&std::free)>;

FreshMemory freshMemory()
{
    void* block = std::malloc(static_cast<std::size_t>(s_length) * sizeof(double));
    return FreshMemory(static_cast<double*>(block), &std::free);
}

void BM_BareLoop(benchmark::State& state)
{
    const std::vector<double> source = samples(false);
    double a = 1000.0;
    double b = 0.5;
    benchmark::DoNotOptimize(a);
    benchmark::DoNotOptimize(b);
    for (auto _ : state) {
        const FreshMemory target = freshMemory();
        for (std::size_t i = 0; i < source.size(); ++i)
            target[i] = a * source[i] + b;
        benchmark::DoNotOptimize(target.get());
        benchmark::ClobberMemory();
    }
    reportArrays(state);
}
BENCHMARK(BM_BareLoop)->Unit(benchmark::kMillisecond);

void BM_PeerConvertArray(benchmark::State& state)
{
    const Pair& pair = s_pairs[state.range(0)];
    state.SetLabel(std::string(pair.from) + " to " + pair.to);
    const PeerConverter converter = peerConverter(pair.peerFrom, pair.peerTo);
    if (!converter) {
        state.SkipWithError("UDUNITS has no such converter");
        return;
    }
    const std::vector<double> source = samples(isToLogarithm(pair));
    for (auto _ : state) {
        const FreshMemory target = freshMemory();
        cv_convert_doubles(converter.get(), source.data(), source.size(), target.get());
        benchmark::DoNotOptimize(target.get());
        benchmark::ClobberMemory();
    }
    reportArrays(state);
}
BENCHMARK(BM_PeerConvertArray)->DenseRange(0, 4)->Unit(benchmark::kMillisecond);

void BM_ConvertedTo(benchmark::State& state)
{
    const Pair& pair = s_pairs[state.range(0)];
    state.SetLabel(std::string(pair.from) + " to " + pair.to);
    const Units source = catalogue().GetUnitsFromString(QString::fromLatin1(pair.from));
    const Units target = catalogue().GetUnitsFromString(QString::fromLatin1(pair.to));
    const BVariant data(samples(isToLogarithm(pair)));
    BVariant converted;
    for (auto _ : state) {
        converted = BVariant(); // so that every result takes fresh memory
        if (source.ConvertedTo(target, data, &converted) < 0)
            state.SkipWithError("the array doesn't convert");
        benchmark::DoNotOptimize(converted.constData());
        benchmark::ClobberMemory();
    }
    double first = 0;
    source.ConvertTo(target, *static_cast<const double*>(data.constData()), &first);
    if (first != *static_cast<const double*>(converted.constData()))
        state.SkipWithError("the array differs from the single value");
    reportArrays(state);
}
BENCHMARK(BM_ConvertedTo)->DenseRange(0, 4)->Unit(benchmark::kMillisecond);

} // namespace
