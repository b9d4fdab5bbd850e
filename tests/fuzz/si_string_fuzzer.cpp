// A text is read by the SI-string parser as by a plain recursive one that makes a regular expression for each term,
// and the diagnosis gives the verdict of both. What is accepted is accepted again from its own SI string.
#include "tests/units/ParserComparison.h"
#include "tests/units/SIStringTexts.h"

#include <QString>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

using namespace Orrery;
using namespace Orrery::UnitsTest;

namespace {

// The plain parser nests and copies: texts that a person could write are enough for it.
constexpr std::size_t s_longest = 256;

/// UTF-8, or UTF-16 by code units behind a first byte that no UTF-8 begins with, which gives lone surrogates too.
QString toText(const std::uint8_t* data, std::size_t size)
{
    if (size == 0 || data[0] != 0xFF)
        return QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<int>(size));
    QString text;
    for (std::size_t i = 1; i + 1 < size; i += 2)
        text.append(QChar(static_cast<ushort>(data[i] << 8 | data[i + 1])));
    return text;
}

void expectNone(const QString& text, const std::string& fault)
{
    if (fault.empty())
        return;
    std::fprintf(stderr, "'%s': %s\n", shown(text).c_str(), fault.c_str());
    std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size > s_longest)
        return 0;
    static TypeModel types;
    const QString text = toText(data, size);
    expectNone(text, differenceFromPlain(text, &types));

    const Units units = Units::FromSIString(text);
    expectNone(text, faultOfDiagnosis(text, units.IsValid()));
    if (units.IsValid() && !(Units::FromSIString(units.GetSIUnits()) == units))
        expectNone(text, "isn't accepted twice");
    return 0;
}
