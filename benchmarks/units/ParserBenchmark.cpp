// Reading SI strings, beside UDUNITS-2's ut_parse of the same texts in the same run.
//
//     ParseSIString of a symbol                    at most 1/8 of ut_parse
//     ParseSIString of a composite                 at most 1/10
//     FromSIString, mean over the catalogue        at most 1/2
//
// What ut_parse returns is an object on the heap, which is freed inside the loop; so is what FromSIString returns.
#include "units/SystemOfUnits.h"
#include "units/Units.h"

#include <benchmark/benchmark.h>

#include <udunits2.h>

#include <QByteArray>
#include <QStringList>

#include <cstddef>
#include <set>
#include <vector>

namespace {
using Orrery::SystemOfUnits;
using Orrery::Units;

const ut_system* peerSystem()
{
    static ut_system* const system = [] {
        ut_set_error_message_handler(ut_ignore);
        return ut_read_xml(nullptr);
    }();
    return system;
}

// The texts of the catalogue that are SI strings: those that stand for the unit they name.
QStringList catalogueTexts()
{
    QStringList texts;
    std::set<QString> seen;
    const QList<Units> all = SystemOfUnits::instance().GetAllUnits();
    for (const Units& units : all) {
        const QString text = units.GetSIUnits();
        if (text == units.GetUnitsLabel() && seen.insert(text).second)
            texts.append(text);
    }
    return texts;
}

void parse(benchmark::State& state, const QString& text)
{
    for (auto _ : state) {
        Units::Impl numbers;
        if (!numbers.ParseSIString(text))
            state.SkipWithError("the text isn't read");
        benchmark::DoNotOptimize(numbers.scale);
    }
}

void parseByPeer(benchmark::State& state, const char* text)
{
    for (auto _ : state) {
        ut_unit* const unit = ut_parse(peerSystem(), text, UT_UTF8);
        if (!unit)
            state.SkipWithError("the peer doesn't read the text");
        ut_free(unit);
    }
}

void BM_PeerSymbol(benchmark::State& state)
{
    parseByPeer(state, "km");
}
BENCHMARK(BM_PeerSymbol);

void BM_ParseSymbol(benchmark::State& state)
{
    parse(state, QStringLiteral("km"));
}
BENCHMARK(BM_ParseSymbol);

void BM_PeerComposite(benchmark::State& state)
{
    parseByPeer(state, "kg*m^2/(A*s^3)");
}
BENCHMARK(BM_PeerComposite);

void BM_ParseComposite(benchmark::State& state)
{
    parse(state, QStringLiteral("kg*m^2/(A*s^3)"));
}
BENCHMARK(BM_ParseComposite);

void BM_PeerCatalogue(benchmark::State& state)
{
    std::vector<QByteArray> texts; // those that the peer reads too
    for (const QString& text : catalogueTexts()) {
        texts.push_back(text.toUtf8());
        ut_unit* const unit = ut_parse(peerSystem(), texts.back().constData(), UT_UTF8);
        if (!unit)
            texts.pop_back();
        ut_free(unit);
    }
    std::size_t next = 0;
    for (auto _ : state) {
        ut_free(ut_parse(peerSystem(), texts[next].constData(), UT_UTF8));
        next = next + 1 == texts.size() ? 0 : next + 1;
    }
    state.counters["texts"] = static_cast<double>(texts.size());
}
BENCHMARK(BM_PeerCatalogue);

void BM_FromSIStringCatalogue(benchmark::State& state)
{
    const QStringList texts = catalogueTexts();
    int next = 0;
    for (auto _ : state) {
        const Units units = Units::FromSIString(texts.at(next));
        if (!units.IsValid())
            state.SkipWithError("a text of the catalogue isn't read");
        next = next + 1 == texts.size() ? 0 : next + 1;
    }
    state.counters["texts"] = static_cast<double>(texts.size());
}
BENCHMARK(BM_FromSIStringCatalogue);

// Linear in the length: the bytes per second stay the same.
void BM_ParseLongProduct(benchmark::State& state)
{
    const QString text =
        QStringLiteral("m") + QStringLiteral("*m").repeated(static_cast<int>(state.range(0)));
    parse(state, text);
    state.SetBytesProcessed(state.iterations() * text.size() * 2);
}
BENCHMARK(BM_ParseLongProduct)->RangeMultiplier(10)->Range(10, 1000000);

void BM_ParseNested(benchmark::State& state)
{
    const int depth = static_cast<int>(state.range(0));
    const QString text =
        QString(depth, QLatin1Char('(')) + QLatin1Char('m') + QString(depth, QLatin1Char(')'));
    parse(state, text);
    state.SetBytesProcessed(state.iterations() * text.size() * 2);
}
BENCHMARK(BM_ParseNested)->RangeMultiplier(10)->Range(10, 100000);

void BM_DiagnoseRefusedText(benchmark::State& state)
{
    const QString text = QStringLiteral("kohm/m");
    for (auto _ : state)
        benchmark::DoNotOptimize(Units::DiagnoseSIString(text).position);
}
BENCHMARK(BM_DiagnoseRefusedText);

} // namespace
