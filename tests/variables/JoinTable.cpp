// Prints what joined and swept variables make of numbers of all types, for JoinOracle.py. One line for each read:
//
//     concat <start> <end> <member>... = <type>:<elements>
//     sweep <start> <end> <length>... <parameter> = <type>:<elements>
//
// where a member, a parameter and the result are <code of the type>:<bytes of the elements in hex>.
#include "tests/variables/JoinedVariableTestSupport.h"
#include "variables/ConcatVar.h"
#include "variables/SweptVariable.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

using namespace Orrery;
using namespace Orrery::JoinTest;
using Brindle::Quay::BVariant;

std::string textOf(const BVariant& value)
{
    std::string text = std::to_string(value.getWellKnownType().code()) + ':';
    const auto* const bytes = static_cast<const unsigned char*>(value.constData());
    const std::uint64_t size = value.elementCount() * elementSize(value.getWellKnownType());
    for (std::uint64_t i = 0; i < size; ++i) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned>(bytes[i]));
        text += digits;
    }
    return text;
}

std::vector<std::uint16_t> numberCodes()
{
    std::vector<std::uint16_t> codes;
    for (const auto& row : TestSupport::elementRows()) {
        if (row.kind != TestSupport::ElementKind::Text && row.kind != TestSupport::ElementKind::Time)
            codes.push_back(row.code);
    }
    return codes;
}

std::string printed(const BVariant& value)
{
    if (ToDimensions(value).size() != 1) // all values here are vectors
        std::abort();
    return textOf(value);
}

void printConcat(const std::vector<BVariant>& values, std::uint64_t start, std::uint64_t end)
{
    PropertyObject top(QStringLiteral("top"));
    auto* const c = insert(top, std::make_unique<ConcatVar>(QStringLiteral("c")));
    std::printf("concat %llu %llu", static_cast<unsigned long long>(start),
                static_cast<unsigned long long>(end));
    for (std::size_t i = 0; i < values.size(); ++i) {
        c->AddVariable(insertData(top, numbered("x", i), values[i]));
        std::printf(" %s", textOf(values[i]).c_str());
    }
    BVariant out;
    if (c->GetValueRange(&out, start, end) < 0)
        std::abort();
    std::printf(" = %s\n", printed(out).c_str());
}

void printSweep(const BVariant& parameter, const std::vector<std::uint64_t>& lengths, std::uint64_t start,
                std::uint64_t end)
{
    PropertyObject top(QStringLiteral("top"));
    auto* const c = insert(top, std::make_unique<ConcatVar>(QStringLiteral("c")));
    auto* const sweep = insert(top, std::make_unique<SweptVariable>(QStringLiteral("s")));
    std::printf("sweep %llu %llu", static_cast<unsigned long long>(start),
                static_cast<unsigned long long>(end));
    for (std::size_t i = 0; i < lengths.size(); ++i) {
        c->AddVariable(insertData(top, numbered("x", i), MakeCounting({lengths[i]})));
        std::printf(" %llu", static_cast<unsigned long long>(lengths[i]));
    }
    sweep->SetParameter(insertData(top, QStringLiteral("p"), parameter));
    sweep->SetConcatVar(c);
    BVariant out;
    if (sweep->GetValueRange(&out, start, end) < 0)
        std::abort();
    std::printf(" %s = %s\n", textOf(parameter).c_str(), printed(out).c_str());
}

} // namespace

int main()
{
    std::mt19937_64 random(20);
    const std::vector<std::uint16_t> codes = numberCodes();
    const auto vector = [&random](std::uint16_t code, std::uint64_t size) {
        return operationsOf(code).random({size}, DataOrdering::RowMajor, random);
    };
    for (const std::uint16_t a : codes) {
        for (const std::uint16_t b : codes) {
            const std::vector<BVariant> two{vector(a, 3), vector(b, 2)};
            printConcat(two, 0, 0);
            printConcat(two, 1, 4);
            for (const std::uint16_t third : codes)
                printConcat({vector(a, 1), vector(b, 2), vector(third, 1)}, 0, 4);
        }
        for (const auto& lengths : {std::vector<std::uint64_t>{3, 2}, {0, 2, 0, 1}, {1, 1, 1, 1}, {5}}) {
            const BVariant parameter = vector(a, lengths.size());
            std::uint64_t count = 0;
            for (const std::uint64_t length : lengths)
                count += length;
            for (std::uint64_t start = 0; start <= count; ++start)
                for (std::uint64_t end = std::max<std::uint64_t>(start, 1); end <= count; ++end)
                    printSweep(parameter, lengths, start, end);
        }
    }
    return 0;
}
