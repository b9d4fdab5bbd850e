#include "hosts/orrery/TreeListing.h"

#include "foundations/property/PropertyObject.h"
#include "foundations/property/PropertyReference.h"
#include "foundations/property/SimpleProperty.h"
#include "hosts/orrery/ElementText.h"
#include "hosts/orrery/PlainText.h"
#include "hosts/orrery/SweepAccess.h"
#include "hosts/orrery/TreeAccess.h"
#include "hosts/orrery/UnitText.h"
#include "variables/FunctionVarStrategy.h"
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

using Row = std::array<std::string, ColumnCount>;

bool isDigit(QChar c)
{
    return c >= QLatin1Char('0') && c <= QLatin1Char('9');
}

// The digits at `*at`, without zeros in front.
QStringRef takeNumber(const QString& text, int* at)
{
    while (*at + 1 < text.size() && text[*at] == QLatin1Char('0') && isDigit(text[*at + 1]))
        ++*at;
    const int begin = *at;
    while (*at < text.size() && isDigit(text[*at]))
        ++*at;
    return text.midRef(begin, *at - begin);
}

// "dc2" comes before "dc10".
bool comesBefore(const QString& a, const QString& b)
{
    int i = 0;
    int k = 0;
    while (i < a.size() && k < b.size()) {
        if (isDigit(a[i]) && isDigit(b[k])) {
            const QStringRef x = takeNumber(a, &i);
            const QStringRef y = takeNumber(b, &k);
            if (x.size() != y.size())
                return x.size() < y.size();
            if (x != y)
                return x < y;
        } else if (a[i] != b[k]) {
            return a[i] < b[k];
        } else {
            ++i;
            ++k;
        }
    }
    const int leftA = a.size() - i;
    const int leftB = b.size() - k;
    return leftA != leftB ? leftA < leftB : a < b;
}

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

    void addChildren(PropertyObject& folder, std::size_t depth);
    void addNode(AbstractProperty& node, std::size_t depth);
    void print(Output& out) const;

private:
    bool isListed(const AbstractProperty& node) const;
    Row rowOf(AbstractProperty& node, std::size_t depth) const;
    static void describeValue(const BVariant& value, Row* row);
    static void describeComputed(const Variable& variable, Row* row);
    static void describeVariable(const Variable& variable, Row* row);
    static void describeSweep(const ParameterizedResultData& sweep, Row* row);
    static std::string flagsOf(const AbstractProperty& node);
    std::vector<Column> columns() const;
    Row heading() const;

    ListingOptions m_options;
    std::vector<Row> m_rows;
};

bool Listing::isListed(const AbstractProperty& node) const
{
    return m_options.showsAll || (node.IsPropertyObject() && !node.IsHidden());
}

void Listing::addChildren(PropertyObject& folder, std::size_t depth)
{
    QList<AbstractProperty*> children;
    folder.GetPropertyList(&children);
    std::sort(children.begin(), children.end(), [](const AbstractProperty* a, const AbstractProperty* b) {
        return comesBefore(a->GetName(), b->GetName());
    });
    for (AbstractProperty* const child : children) {
        if (isListed(*child))
            addNode(*child, depth);
    }
}

void Listing::addNode(AbstractProperty& node, std::size_t depth)
{
    m_rows.push_back(rowOf(node, depth));
    const bool isOpen = node.IsPropertyObject() && (!node.IsVariable() || m_options.showsAll);
    if (isOpen)
        addChildren(static_cast<PropertyObject&>(node), depth + 1);
}

void Listing::describeValue(const BVariant& value, Row* row)
{
    (*row)[Shape] = shapeText(dimensionsOf(value));
    (*row)[Elements] = elementTypeName(value.getWellKnownType());
    (*row)[Count] = std::to_string(value.elementCount());
    if (value.getDimensions().size() > 1)
        (*row)[Ordering] =
            value.getDataOrdering() == Brindle::Quay::DataOrdering::RowMajor ? "row-major" : "column-major";
    if (value.elementCount() != 1 || (*row)[Elements] == "run-time")
        return;
    std::string text;
    try {
        ElementText(value).append(&text, 0);
    } catch (const std::exception&) {
        (*row)[Value] = s_unreadable; // the rest of the table is worth having
        return;
    }
    (*row)[Value] = (*row)[Elements] == "text" ? inQuotes(text) : text;
}

// What another process computed, and this one would only compute again.
const SimpleProperty* storedResult(const Variable& variable)
{
    if (!dynamic_cast<FunctionVarStrategy*>(variable.GetStrategyPtr().lock().get()))
        return nullptr;
    return dynamic_cast<const SimpleProperty*>(variable.GetPropertyConstPtr(QStringLiteral("Data")));
}

// Of computed values the first element tells the type.
void Listing::describeComputed(const Variable& variable, Row* row)
{
    std::vector<std::uint64_t> shape;
    if (variable.GetElementShape(&shape) < 0)
        return;
    shape.insert(shape.begin(), variable.GetMaxIndepOffset());
    std::uint64_t count = 1;
    for (const std::uint64_t size : shape)
        count *= size;
    (*row)[Shape] = shapeText(shape);
    (*row)[Count] = std::to_string(count);
    BVariant first;
    if (shape.front() > 0 && variable.GetValueAt(&first, 0) >= 0)
        (*row)[Elements] = elementTypeName(first.getWellKnownType());
}

// What is wrong with one variable leaves the rest of the table worth having.
void Listing::describeVariable(const Variable& variable, Row* row)
{
    if (const std::optional<Units> units = unitsOf(variable))
        (*row)[UnitsLabel] = "[" + unitsLabel(*units) + "]";
    (*row)[Axes] = axesText(variable);
    try {
        if (holdsStoredData(variable))
            describeValue(variable.GetData(), row);
        else if (const SimpleProperty* const result = storedResult(variable))
            describeValue(result->GetValue(), row);
        else
            describeComputed(variable, row);
    } catch (const std::exception&) {
        (*row)[Value] = s_unreadable;
    }
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

Row Listing::rowOf(AbstractProperty& node, std::size_t depth) const
{
    Row row;
    row[Name] = std::string(2 * depth, ' ') + pathName(node.GetName());
    row[Type] = printable(node.PropertyObjType().toStdString());
    row[Flags] = flagsOf(node);
    if (node.IsVariable()) {
        describeVariable(static_cast<Variable&>(node), &row);
    } else if (node.IsPropertyObject()) {
        row[Name] += '/';
        row[Count] = std::to_string(static_cast<PropertyObject&>(node).GetPropertyCount());
        if (const auto* const sweep = dynamic_cast<const ParameterizedResultData*>(&node))
            describeSweep(*sweep, &row);
    } else if (node.IsSimpleProperty()) {
        describeValue(static_cast<SimpleProperty&>(node).GetValue(), &row);
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

// Units and axes have a column only if something has them, so that trees without look as they always have.
Row Listing::heading() const
{
    Row names = {"NAME", "TYPE", "SHAPE", "ELEMENTS", "UNITS", "AXES", "COUNT", "ORDERING", "FLAGS", "VALUE"};
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
                line += row[column] + std::string(widths[column] - columnsOf(row[column]) + 2, ' ');
        }
        line.erase(line.find_last_not_of(' ') + 1);
        out.write(line + '\n');
    }
}

} // namespace

void printListing(Output& out, AbstractProperty& node, const ListingOptions& options)
{
    Listing listing(options);
    const bool isOpen = node.IsPropertyObject() && (!node.IsVariable() || options.showsAll);
    if (isOpen)
        listing.addChildren(static_cast<PropertyObject&>(node), 0);
    else
        listing.addNode(node, 0);
    listing.print(out);
}

} // namespace Orrery::Host
