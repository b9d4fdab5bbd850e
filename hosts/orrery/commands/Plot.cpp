#include "foundations/property/PropertyPath.h"
#include "foundations/property/PropertyReference.h"
#include "foundations/variant/VariantOperations.h"
#include "hosts/orrery/CurveReader.h"
#include "hosts/orrery/Diagram.h"
#include "hosts/orrery/ElementText.h"
#include "hosts/orrery/Failure.h"
#include "hosts/orrery/Numbers.h"
#include "hosts/orrery/PlainText.h"
#include "hosts/orrery/SweepAccess.h"
#include "hosts/orrery/TreeAccess.h"
#include "hosts/orrery/UnitText.h"
#include "hosts/orrery/commands/Commands.h"
#include "variables/ConcatVar.h"

#include <QHash>
#include <QStringList>

#include <sys/stat.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Orrery::Host {

namespace {

constexpr std::size_t s_mostLines = 1000;

struct PlotOptions
{
    std::string file;
    std::vector<std::string> paths;
    std::string output;
    bool isLogX = false;
    bool isLogY = false;
};

const char s_help[] = R"(Each PATH is a variable, drawn over its first axis, or the path of a sweep with
the name of a variable behind it: that is one line for each member of the sweep,
with the values of the parameter in the legend. Axes are in display units where
there are any. Of complex values the magnitude is drawn.

The ending of OUT, .svg or .png, says what to write. On a logarithmic axis,
values that are not above 0 are left out.

Examples: orrery plot diode.h5 'diode/dc-sweep/i(vd)' -o diode.svg
          orrery plot rc.h5 'rc/ac1/v(out)' -o rc.png --log-x --log-y)";

/// A line to draw and what to call it.
struct LineSource
{
    const Variable* variable;
    QString name;   ///< of the variable
    QString path;   ///< as it was typed
    QString values; ///< of the parameters, "27 °C"; empty without
};

struct Sources
{
    std::vector<LineSource> lines;
    QString parameters; ///< names of the parameters of the sweep
    QString path;       ///< the present one
    int paths = 0;
    bool hasSweep = false;
};

QString asText(const std::string& text)
{
    return QString::fromStdString(text);
}

// A value as a label: few digits, with its units in front of which stands a blank.
QString valueLabel(const Variable& parameter, std::uint64_t index)
{
    BVariant value;
    if (parameter.GetValueAt(&value, index) < 0)
        throw Failure("the parameter " + inQuotes(parameter.GetName().toStdString()) + " has no value " +
                      std::to_string(index));
    const std::optional<Units> units = unitsOf(parameter);
    const std::optional<Units> shown = shownUnitsOf(parameter);
    double number = 0.0;
    std::string text;
    if (Brindle::Quay::tryGetScalar(value, &number)) {
        if (units && shown)
            units->ConvertTo(*shown, number, &number);
        text = roundedText(number, 6);
    } else {
        ElementText(value).append(&text, 0);
    }
    return asText(printable(text) + (shown ? " " + unitsLabel(*shown) : std::string()));
}

QString joinedLabels(const QString& a, const QString& b)
{
    return a.isEmpty() || b.isEmpty() ? a + b : a + QStringLiteral(", ") + b;
}

ParameterizedResultData* sweepOf(const AbstractProperty& joined)
{
    return dynamic_cast<ParameterizedResultData*>(joined.GetParent());
}

Variable* memberAt(const AbstractProperty* child)
{
    const AbstractProperty* node = child;
    if (node->IsPropertyReference())
        node = static_cast<const PropertyReference*>(node)->Resolve();
    return dynamic_cast<Variable*>(const_cast<AbstractProperty*>(node));
}

/// Adds the members of a joined variable, those of nested sweeps in their place.
void addMembers(const Variable& joined, const QString& values, Sources* sources)
{
    const Variable* const parameter = parameterOf(*sweepOf(joined));
    QList<AbstractProperty*> members;
    joined.GetPrefixedChildrenProperties(&members, QString());
    for (int i = 0; i < members.size(); ++i) {
        const Variable* const member = memberAt(members[i]);
        if (!member || !parameter)
            throw Failure("the sweep's member " + std::to_string(i) + " leads nowhere");
        const QString all = joinedLabels(values, valueLabel(*parameter, static_cast<std::uint64_t>(i)));
        if (sweepOf(*member) && dynamic_cast<const ConcatVar*>(member))
            addMembers(*member, all, sources);
        else
            sources->lines.push_back({member, joined.GetName(), sources->path, all});
        if (sources->lines.size() > s_mostLines)
            throw Failure("there are more than " + std::to_string(s_mostLines) + " lines to draw");
    }
}

// Parameters of a sweep and of the first sweep in it, and so on.
QString parameterNames(const Variable& joined)
{
    QString names;
    const Variable* level = &joined;
    while (level && sweepOf(*level)) {
        const Variable* const parameter = parameterOf(*sweepOf(*level));
        names = joinedLabels(names, parameter ? parameter->GetName() : QString());
        QList<AbstractProperty*> members;
        level->GetPrefixedChildrenProperties(&members, QString());
        const Variable* const first = members.isEmpty() ? nullptr : memberAt(members.front());
        level = dynamic_cast<const ConcatVar*>(first);
    }
    return names;
}

// The sweep and the name of its variable that a path to nothing means; null for none.
ParameterizedResultData* sweepAt(DataFile& file, const std::string& path, QString* name)
{
    QStringList names = Property::SplitPath(QStringLiteral("/") + asText(path));
    if (names.isEmpty())
        return nullptr;
    *name = names.takeLast();
    AbstractProperty* node =
        names.isEmpty() ? file.GetRoot() : Property::FindProperty(file.GetRoot(), Property::BuildPath(names));
    if (node && node->IsPropertyReference())
        node = static_cast<PropertyReference*>(node)->Resolve();
    return dynamic_cast<ParameterizedResultData*>(node);
}

void addPath(DataFile& file, const std::string& fileName, const std::string& path, Sources* sources)
{
    ++sources->paths;
    sources->path = asText(path);
    QString name;
    if (ParameterizedResultData* const sweep = sweepAt(file, path, &name)) {
        const Variable* const joined = joinedVariable(*sweep, name);
        sources->hasSweep = true;
        if (sources->parameters.isEmpty())
            sources->parameters = parameterNames(*joined);
        addMembers(*joined, QString(), sources);
        return;
    }
    const AbstractProperty* const node = findNode(file, fileName, path);
    if (dynamic_cast<const ParameterizedResultData*>(node))
        throw Failure("is a sweep; put the name of one of its variables behind the path");
    const auto* const variable = dynamic_cast<const Variable*>(node);
    if (!variable)
        throw Failure("is no variable");
    sources->lines.push_back({variable, variable->GetName(), sources->path, QString()});
}

QString axisLabel(const QString& name, const std::optional<Units>& units)
{
    return asText(printable(name.toStdString()) + unitsSuffix(units)).trimmed();
}

// One name for all lines if they have one, else none: the legend tells them.
QString commonName(const std::vector<LineSource>& lines)
{
    for (const LineSource& line : lines) {
        if (line.name != lines.front().name)
            return {};
    }
    return lines.front().name;
}

// Whether lines of several paths can be told apart by the names of their variables.
bool namesTell(const std::vector<LineSource>& lines)
{
    QHash<QString, QString> paths;
    for (const LineSource& line : lines) {
        const QString path = paths.value(line.name, line.path);
        if (path != line.path)
            return false;
        paths.insert(line.name, path);
    }
    return true;
}

// A legend has its place beside the lines, and must not take theirs.
QString shortened(const QString& name)
{
    constexpr int most = 40;
    return name.size() <= most ? name : name.left(most / 2) + QChar(0x2026) + name.right(most / 2);
}

QString lineLabel(const LineSource& line, const Sources& sources, bool isNamed)
{
    if (sources.paths == 1)
        return shortened(line.values);
    const QString name = isNamed ? line.name : line.path;
    return joinedLabels(shortened(asText(printable(name.toStdString()))), shortened(line.values));
}

void addLines(const Sources& sources, const CurveOptions& options, Diagram* diagram)
{
    bool hasMagnitudes = false;
    bool hasPoints = false;
    const bool isNamed = namesTell(sources.lines);
    for (const LineSource& line : sources.lines) {
        Curve curve = readCurve(*line.variable, options);
        hasMagnitudes = hasMagnitudes || curve.isMagnitude;
        hasPoints = hasPoints || !curve.pieces.empty();
        diagram->lines.push_back({lineLabel(line, sources, isNamed), std::move(curve.pieces)});
    }
    if (!hasPoints)
        throw Failure("there are no values to draw");
    const QString name = commonName(sources.lines);
    const QString shown =
        hasMagnitudes ? QStringLiteral("magnitude") + (name.isEmpty() ? "" : " of ") + name : name;
    diagram->yLabel = axisLabel(shown, options.yUnits);
}

Diagram makeDiagram(const Sources& sources, const PlotOptions& options)
{
    Diagram diagram;
    diagram.isLogX = options.isLogX;
    diagram.isLogY = options.isLogY;
    diagram.isSequence = sources.hasSweep && sources.paths == 1;
    diagram.legendTitle = asText(printable(sources.parameters.toStdString()));
    const Variable& first = *sources.lines.front().variable;
    const Variable* const axis = firstAxisOf(first);
    CurveOptions curves;
    curves.isLogX = options.isLogX;
    curves.isLogY = options.isLogY;
    curves.yUnits = shownUnitsOf(first);
    if (axis)
        curves.xUnits = shownUnitsOf(*axis);
    diagram.xLabel = axisLabel(axis ? axis->GetName() : QStringLiteral("offset"), curves.xUnits);
    addLines(sources, curves, &diagram);
    return diagram;
}

void checkOutput(const PlotOptions& options)
{
    if (!isDiagramPath(options.output))
        throw Failure("--output: expected a name that ends in .svg or .png, found " +
                          inQuotes(options.output),
                      ExitUsage);
    struct stat out = {};
    struct stat in = {};
    if (::stat(options.output.c_str(), &out) == 0 && ::stat(options.file.c_str(), &in) == 0 &&
        in.st_dev == out.st_dev && in.st_ino == out.st_ino)
        throw Failure(printable(options.output) + ": is the file to read; write to another one");
}

Failure placedFailure(const PlotOptions& options, const std::string& path, const Failure& failure)
{
    const std::string place = printable(options.file) + ": ";
    const std::string line = failure.what();
    if (line.compare(0, place.size(), place) == 0)
        return failure;
    return Failure(place + (path.empty() ? "" : printable(path) + ": ") + line, failure.exitCode());
}

Sources findSources(DataFile& file, const PlotOptions& options)
{
    Sources sources;
    for (const std::string& path : options.paths) {
        try {
            addPath(file, options.file, path, &sources);
        } catch (const Failure& failure) {
            throw placedFailure(options, path, failure);
        }
    }
    if (sources.lines.empty())
        throw Failure(printable(options.file) + ": there are no lines to draw");
    return sources;
}

Diagram readDiagram(const PlotOptions& options)
{
    const std::shared_ptr<DataFile> file = openForReading(options.file);
    try {
        return makeDiagram(findSources(*file, options), options);
    } catch (const Failure& failure) {
        throw placedFailure(options, options.paths.size() == 1 ? options.paths.front() : std::string(),
                            failure);
    } catch (const std::exception& error) {
        throw Failure(fileLine(options.file, QString::fromUtf8(error.what())));
    }
}

void plot(const PlotOptions& options)
{
    checkOutput(options);
    drawDiagram(readDiagram(options), options.output);
}

} // namespace

void addPlotCommand(CLI::App& program, Action* action)
{
    CLI::App* const command = program.add_subcommand("plot", "Draw variables over their axes");
    const auto options = std::make_shared<PlotOptions>();
    command->add_option("FILE", options->file, "Data file")->required()->type_name("");
    command->add_option("PATH", options->paths, "What to draw, such as run/dc1/i(vd)")
        ->required()
        ->type_name("");
    command->add_option("-o,--output", options->output, "Picture to write, .svg or .png")
        ->required()
        ->type_name("OUT");
    command->add_flag("--log-x", options->isLogX, "Logarithmic horizontal axis");
    command->add_flag("--log-y", options->isLogY, "Logarithmic vertical axis");
    command->footer(s_help);
    command->callback([options, action] { *action = [options](Output&) { plot(*options); }; });
}

} // namespace Orrery::Host
