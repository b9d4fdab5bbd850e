#include "hosts/orrery/ElementText.h"
#include "hosts/orrery/EventLoop.h"
#include "hosts/orrery/Failure.h"
#include "hosts/orrery/PlainText.h"
#include "hosts/orrery/ProgressLine.h"
#include "hosts/orrery/RawFile.h"
#include "hosts/orrery/Replay.h"
#include "hosts/orrery/SignalPrinter.h"
#include "hosts/orrery/commands/Commands.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

namespace Orrery::Host {

namespace {

struct WatchOptions
{
    std::string file;
    std::string vector;
    std::string plot = "1";
    std::string step;
    bool hasVector = false;
    bool hasStep = false;
    bool isQueued = false;
};

const char s_help[] = R"(A variable grows by some points of the vector at a time, in an event loop. When
all are there it is put into a folder, and then it is destroyed. What its
signals say is printed, with tabs between the columns:
  update   name, number of points so far, newest value
  renamed  path of its new place
  removed  path of the place it had

The signals call the printing client directly. With --queued they wait in the
event loop, and an update shows the variable as it is by then: a step further.

Examples: orrery watch diode.raw
          orrery watch diode.raw --plot 3 --vector 'i(vd)' --step 50 --queued)";

std::uint64_t parseFromOne(const std::string& option, const std::string& text)
{
    std::uint64_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end || number == 0)
        throw Failure(option + ": expected a number from 1, found " + inQuotes(text), ExitUsage);
    return number;
}

RawPlot readPlot(const std::string& path, std::uint64_t number)
{
    ProgressLine progress(path);
    RawFile raw(path, [&](std::uint64_t done, std::uint64_t size) { progress.update(done, size); });
    RawPlot plot;
    for (std::uint64_t count = 0; count < number; ++count) {
        if (!raw.next(&plot))
            throw Failure(printable(path) + ": there is no plot " + std::to_string(number) +
                          "; the last one is " + std::to_string(count));
    }
    return plot;
}

// The first vector is what the others depend on, if there are others.
RawVector& wantedVector(const WatchOptions& options, RawPlot& plot)
{
    if (!options.hasVector)
        return plot.vectors[plot.vectors.size() > 1 ? 1 : 0];
    const QString name = QString::fromStdString(options.vector);
    const auto found = std::find_if(plot.vectors.begin(), plot.vectors.end(),
                                    [&](const RawVector& vector) { return vector.name == name; });
    if (found == plot.vectors.end())
        throw Failure(printable(options.file) + ": plot " + options.plot + ": there is no vector " +
                      inQuotes(options.vector));
    return *found;
}

std::uint64_t tenthOf(const Brindle::Quay::BVariant& data)
{
    const std::uint64_t points = data.isEmpty() ? 0 : dimensionsOf(data).front();
    return points / 10 + (points % 10 > 0 ? 1 : 0);
}

void watch(const WatchOptions& options, Output& out)
{
    const std::uint64_t number = parseFromOne("--plot", options.plot);
    const std::uint64_t givenStep = options.hasStep ? parseFromOne("--step", options.step) : 0;
    RawPlot plot = readPlot(options.file, number);
    RawVector vector = std::move(wantedVector(options, plot));
    plot = RawPlot();

    const std::uint64_t step = options.hasStep ? givenStep : tenthOf(vector.data);
    EventLoop loop;
    SignalPrinter printer(loop, out);
    Replay replay(loop, vector.name, QStringLiteral("plot%1").arg(number), std::move(vector.data), step);
    printer.follow(replay.variable(), options.isQueued ? Qt::QueuedConnection : Qt::DirectConnection);
    replay.start();
    loop.run();
}

} // namespace

void addWatchCommand(CLI::App& program, Action* action)
{
    CLI::App* const command =
        program.add_subcommand("watch", "Replay a raw file and print a variable's signals");
    const auto options = std::make_shared<WatchOptions>();
    command->add_option("FILE", options->file, "SPICE raw file")->required()->type_name("");
    CLI::Option* const vector =
        command->add_option("--vector", options->vector, "Which vector; the second one if not given")
            ->type_name("NAME");
    command->add_option("--plot", options->plot, "Which plot of the file, from 1")->type_name("N");
    CLI::Option* const step =
        command->add_option("--step", options->step, "Points in a step; a tenth of all if not given")
            ->type_name("N");
    command->add_flag("--queued", options->isQueued, "Queue the signals in the event loop");
    command->footer(s_help);
    command->callback([options, action, vector, step] {
        options->hasVector = vector->count() > 0;
        options->hasStep = step->count() > 0;
        *action = [options](Output& out) { watch(*options, out); };
    });
}

} // namespace Orrery::Host
