#include "hosts/orrery/TreeListing.h"

#include "foundations/property/PropertyObject.h"
#include "foundations/property/PropertyReference.h"
#include "foundations/property/SimpleProperty.h"
#include "hosts/orrery/ElementText.h"
#include "hosts/orrery/NodeFacts.h"
#include "hosts/orrery/PlainText.h"
#include "hosts/orrery/SweepAccess.h"
#include "hosts/orrery/TreeAccess.h"
#include "hosts/orrery/UnitText.h"
#include "variables/Variable.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Orrery::Host {

namespace {

enum Column
{
    Name,
    Type,
    Shape,
    Elements,
    UnitsLabel,
    Axes,
    Count,
    Ordering,
    Flags,
    Value,
    ColumnCount
};

struct Row
{
    std::array<std::string, ColumnCount> cells;
    Ink name = Ink::Heading;
    bool isHeading = false;
    bool isHidden = false;

    std::string& operator[](Column column) { return cells[column]; }
    const std::string& operator[](Column column) const { return cells[column]; }
};

const char s_unreadable[] = "(can't be read)";

// The name of an axis, with its path unless it lies beside the variable; "?" for one that leads nowhere.
std::string axisText(const Variable& variable, int index)
{
    Variable* axis = nullptr;
    if (variable.GetIndepVariable(&axis, index) < 0 || !axis)
        return "?";
    return axis->GetParent() == variable.GetParent() ? pathName(axis->GetName())
                                                     : printable(axis->GetFullPath().toStdString());
}

// "over v(v-sweep)"; empty without axes.
std::string axesText(const Variable& variable)
{
    constexpr int most = 8; // a hostile file may have millions
    const int count = variable.GetIndepCount();
    std::string text;
    for (int i = 0; i < std::min(count, most); ++i)
        text += (text.empty() ? "over " : ", ") + axisText(variable, i);
    return count > most ? text + ", ..." : text;
}

class Listing
{
public:
    explicit Listing(const ListingOptions& options)
        : m_options(options)
    {
    }

    void addNode(AbstractProperty& node, std::size_t depth) { m_rows.push_back(rowOf(node, depth)); }
    void print(Output& out) const;

private:
    Row rowOf(AbstractProperty& node, std::size_t depth) const;
    static void describeValues(const ValueFacts& facts, Row* row);
    static void describeVariable(const Variable& variable, Row* row);
    static void describeSweep(const ParameterizedResultData& sweep, Row* row);
    static std::string flagsOf(const AbstractProperty& node);
    std::vector<Column> columns() const;
    Row heading() const;

    ListingOptions m_options;
    std::vector<Row> m_rows;
};

void Listing::describeValues(const ValueFacts& facts, Row* row)
{
    (*row)[Shape] = facts.shape ? shapeText(*facts.shape) : std::string();
    (*row)[Elements] = facts.elements;
    (*row)[Count] = facts.count ? std::to_string(*facts.count) : std::string();
    (*row)[Ordering] = facts.ordering;
    if (facts.isUnreadable)
        (*row)[Value] = s_unreadable;
    if (facts.single.isEmpty())
        return;
    std::string text;
    ElementText(facts.single).append(&text, 0);
    (*row)[Value] = facts.elements == "text" ? inQuotes(text) : text;
}

void Listing::describeVariable(const Variable& variable, Row* row)
{
    if (const std::optional<Units> units = unitsOf(variable))
        (*row)[UnitsLabel] = "[" + unitsLabel(*units) + "]";
    (*row)[Axes] = axesText(variable);
    describeValues(factsOf(variable), row);
}

// What a listing would not show otherwise: the members are references.
void Listing::describeSweep(const ParameterizedResultData& sweep, Row* row)
{
    QList<AbstractProperty*> members;
    sweep.GetPrefixedChildrenProperties(&members, QString());
    (*row)[Shape] = std::to_string(members.size()) + (members.size() == 1 ? " member" : " members");
    const Variable* const parameter = parameterOf(sweep);
    (*row)[Axes] = "over " + (parameter ? pathName(parameter->GetName()) : "?");
}

std::string Listing::flagsOf(const AbstractProperty& node)
{
    std::string flags = "---";
    if (node.IsReadOnly())
        flags[0] = 'r';
    if (node.IsHidden())
        flags[1] = 'h';
    if (node.IsSerializable())
        flags[2] = 's';
    if (node.IsSimpleProperty() &&
        static_cast<const SimpleProperty&>(node).GetValueIsCellArray() != IsCellArrayFalse)
        flags += 'c';
    return flags;
}

Ink inkOf(const AbstractProperty& node)
{
    if (node.IsVariable())
        return Ink::Variable;
    if (node.IsPropertyReference())
        return Ink::Reference;
    return node.IsPropertyObject() ? Ink::Folder : Ink::Plain;
}

Row Listing::rowOf(AbstractProperty& node, std::size_t depth) const
{
    Row row;
    row[Name] = std::string(2 * depth, ' ') + pathName(node.GetName());
    row[Type] = printable(node.PropertyObjType().toStdString());
    row[Flags] = flagsOf(node);
    row.name = inkOf(node);
    row.isHidden = node.IsHidden();
    if (node.IsVariable()) {
        describeVariable(static_cast<Variable&>(node), &row);
    } else if (node.IsPropertyObject()) {
        row[Name] += '/';
        row[Count] = std::to_string(static_cast<PropertyObject&>(node).GetPropertyCount());
        if (const auto* const sweep = dynamic_cast<const ParameterizedResultData*>(&node))
            describeSweep(*sweep, &row);
    } else if (node.IsSimpleProperty()) {
        describeValues(factsOf(static_cast<SimpleProperty&>(node).GetValue()), &row);
    } else if (node.IsPropertyReference()) {
        const auto& reference = static_cast<PropertyReference&>(node);
        const QString file = reference.ReferenceFilePath();
        const QString target =
            (file.isEmpty() ? QString() : file + QLatin1Char(':')) + reference.ReferencePath();
        row[Value] = "-> " + printable(target.toStdString());
    }
    return row;
}

std::vector<Column> Listing::columns() const
{
    if (m_options.isLong)
        return {Name, Type, Shape, Elements, UnitsLabel, Axes, Count, Ordering, Flags, Value};
    return {Name, Type, Shape, Elements, UnitsLabel, Axes, Value};
}

Ink inkOf(const Row& row, Column column)
{
    if (row.isHeading)
        return Ink::Heading;
    if (row.isHidden)
        return Ink::Hidden;
    switch (column) {
    case Name:
        return row.name;
    case Type:
    case Elements:
    case Flags:
        return Ink::Dim;
    case UnitsLabel:
        return Ink::Units;
    default:
        return Ink::Plain;
    }
}

// Units and axes have a column only if something has them, so that trees without look as they always have.
Row Listing::heading() const
{
    Row names;
    names.cells = {"NAME", "TYPE",  "SHAPE",    "ELEMENTS", "UNITS",
                   "AXES", "COUNT", "ORDERING", "FLAGS",    "VALUE"};
    names.isHeading = true;
    for (const Column column : {UnitsLabel, Axes}) {
        if (std::all_of(m_rows.begin(), m_rows.end(), [=](const Row& row) { return row[column].empty(); }))
            names[column].clear();
    }
    return names;
}

void Listing::print(Output& out) const
{
    std::vector<Row> rows;
    if (m_options.isLong && !m_rows.empty())
        rows.push_back(heading());
    rows.insert(rows.end(), m_rows.begin(), m_rows.end());

    std::array<std::size_t, ColumnCount> widths = {};
    for (const Row& row : rows) {
        for (const Column column : columns())
            widths[column] = std::max(widths[column], columnsOf(row[column]));
    }
    for (const Row& row : rows) {
        std::string line;
        for (const Column column : columns()) {
            if (widths[column] > 0) // a column that is empty throughout isn't there
                line += out.painted(inkOf(row, column), row[column]) +
                        std::string(widths[column] - columnsOf(row[column]) + 2, ' ');
        }
        line.erase(line.find_last_not_of(' ') + 1);
        out.write(line + '\n');
    }
}

} // namespace

void printListing(Output& out, AbstractProperty& node, const ListingOptions& options)
{
    Listing listing(options);
    visitListed(node, options.showsAll,
                [&](AbstractProperty& each, std::size_t depth) { listing.addNode(each, depth); });
    listing.print(out);
}

} // namespace Orrery::Host
