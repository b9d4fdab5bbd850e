#include "hosts/orrery/Failure.h"
#include "hosts/orrery/Numbers.h"
#include "hosts/orrery/PlainText.h"
#include "hosts/orrery/UnitText.h"
#include "hosts/orrery/commands/Commands.h"

#include <complex>
#include <memory>
#include <string>

namespace Orrery::Host {

namespace {

struct ConvertOptions
{
    std::string value;
    std::string from;
    std::string to;
    int digits = 12;
};

const char s_help[] = R"(VALUE is a number such as 20 or -1.5e3, or a complex one such as 1+2i, whose
parts are converted each by itself. FROM and TO are names of the catalogue (in,
dBm, degC, kOhm; 'orrery units' lists them) or SI strings (mm^2,
kg*m^2/(A*s^3)).

Examples: orrery convert 20 dBm mW
          orrery convert 100 °C °F
          orrery convert 5 in mil)";

std::complex<double> parseValue(const std::string& text)
{
    std::complex<double> value;
    if (!parseComplex(trimmed(text), &value))
        throw Failure("VALUE must be a number such as 20, -1.5e3 or 1+2i, not " + inQuotes(text), ExitUsage);
    return value;
}

void convert(const ConvertOptions& options, Output& out)
{
    const std::complex<double> value = parseValue(options.value);
    const Units from = parseUnits(options.from);
    const Units to = parseUnits(options.to);
    requireCommensurable(from, to);
    const std::string unit = to.GetUnitsLabel().isEmpty() ? std::string() : " " + unitsLabel(to);
    if (value.imag() == 0.0) {
        double converted = 0.0;
        from.ConvertTo(to, value.real(), &converted);
        out.write(roundedText(converted, options.digits) + unit + "\n");
    } else {
        std::complex<double> converted;
        from.ConvertTo(to, value, &converted);
        out.write(roundedText(converted, options.digits) + unit + "\n");
    }
}

} // namespace

void addConvertCommand(CLI::App& program, Action* action)
{
    CLI::App* const command = program.add_subcommand("convert", "Convert a value from one unit to another");
    const auto options = std::make_shared<ConvertOptions>();
    command->add_option("VALUE", options->value, "The number")->required()->type_name("");
    command->add_option("FROM", options->from, "Its unit")->required()->type_name("");
    command->add_option("TO", options->to, "The unit to convert it to")->required()->type_name("");
    command->add_option("--digits", options->digits, "Significant digits to print, up to 17")
        ->type_name("N")
        ->check(CLI::Range(1, 17).description(""))
        ->capture_default_str();
    command->footer(s_help);
    command->callback([options, action] { *action = [options](Output& out) { convert(*options, out); }; });
}

} // namespace Orrery::Host
