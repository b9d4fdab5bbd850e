#include "hosts/orrery/csv/CsvHeadings.h"

#include "hosts/orrery/PlainText.h"
#include "units/SystemOfUnits.h"

#include <algorithm>
#include <charconv>

namespace Orrery::Host {

namespace {

constexpr std::size_t s_mostDimensions = 31; // with that of the records, what a data file can hold

bool isIndexList(std::string_view text)
{
    return !text.empty() &&
           std::all_of(text.begin(), text.end(), [](char c) { return (c >= '0' && c <= '9') || c == ','; });
}

bool parseIndices(std::string_view text, std::vector<std::uint64_t>* indices)
{
    indices->clear();
    const char* at = text.data();
    const char* const end = at + text.size();
    while (indices->size() < s_mostDimensions) {
        std::uint32_t index = 0;
        const auto [stop, error] = std::from_chars(at, end, index);
        if (error != std::errc())
            return false;
        indices->push_back(index);
        if (stop == end)
            return true;
        if (*stop != ',')
            return false;
        at = stop + 1;
    }
    return false;
}

// Cuts "[...]" off the end; false if there is none.
bool takeBrackets(std::string_view* text, std::string_view* content)
{
    if (text->empty() || text->back() != ']')
        return false;
    const std::size_t open = text->rfind('[');
    if (open == std::string_view::npos)
        return false;
    *content = text->substr(open + 1, text->size() - open - 2);
    text->remove_suffix(text->size() - open);
    return true;
}

bool parseUnitsText(std::string_view text, std::optional<Units>* units, std::string* why)
{
    const QString name = decoded(text == "-" ? "1" : text);
    const Units parsed = SystemOfUnits::instance().GetUnitsFromString(name);
    if (parsed.IsValid()) {
        *units = parsed;
        return true;
    }
    *why = printable(Units::DiagnoseSIString(name).message().toStdString());
    return false;
}

void takeIndicesAndPart(CsvHeading* heading)
{
    const QByteArray bytes = heading->name.toUtf8();
    std::string_view text(bytes.constData(), static_cast<std::size_t>(bytes.size()));
    for (const char* const part : {".re", ".im"}) {
        const std::string_view ending(part);
        if (text.size() > ending.size() && text.substr(text.size() - ending.size()) == ending) {
            heading->part = part;
            text.remove_suffix(ending.size());
            break;
        }
    }
    std::string_view content;
    std::string_view base = text;
    if (takeBrackets(&base, &content) && !trimmed(base).empty() && parseIndices(content, &heading->indices))
        text = trimmed(base);
    else
        heading->indices.clear();
    heading->base = QString::fromUtf8(text.data(), static_cast<int>(text.size()));
}

bool belongTogether(const CsvHeading& a, const CsvHeading& b)
{
    const bool sameUnits = a.units.has_value() == b.units.has_value() && (!a.units || *a.units == *b.units);
    return sameUnits && a.base == b.base && a.part.empty() == b.part.empty() &&
           a.indices.size() == b.indices.size();
}

/// The columns from `first` on that may be one variable: those of one base and one unit.
class Run
{
public:
    Run(const std::vector<CsvHeading>& headings, std::size_t first)
        : m_headings(headings)
        , m_first(first)
    {
        std::size_t end = first + 1;
        while (end < headings.size() && belongTogether(headings[first], headings[end]))
            ++end;
        m_count = end - first;
        m_isComplex = headings[first].part == ".re";
        m_step = m_isComplex ? 2 : 1;
    }

    std::size_t count() const { return m_count; }

    /// Whether all of them are one.
    bool isVariable()
    {
        const CsvHeading& last = m_headings[m_first + m_count - 1];
        const std::size_t dimensions = m_headings[m_first].indices.size();
        if (m_count % m_step != 0 || last.indices.size() != dimensions)
            return false;
        std::uint64_t product = 1;
        for (const std::uint64_t index : last.indices) {
            m_shape.push_back(index + 1);
            if (__builtin_mul_overflow(product, index + 1, &product))
                return false;
        }
        return product == m_count / m_step && isInOrder();
    }

    CsvColumn column() const
    {
        const CsvHeading& heading = m_headings[m_first];
        return {heading.base, heading.units, m_first, m_count, m_shape, m_isComplex};
    }

private:
    bool isInOrder() const
    {
        std::vector<std::uint64_t> position(m_shape.size(), 0);
        for (std::size_t i = 0; i < m_count; ++i) {
            const CsvHeading& heading = m_headings[m_first + i];
            const char* const part = m_isComplex ? (i % 2 == 0 ? ".re" : ".im") : "";
            if (heading.part != part || heading.indices != position)
                return false;
            for (std::size_t k = (i + 1) % m_step == 0 ? position.size() : 0; k-- > 0;) {
                if (++position[k] < m_shape[k])
                    break;
                position[k] = 0;
            }
        }
        return true;
    }

    const std::vector<CsvHeading>& m_headings;
    std::size_t m_first;
    std::size_t m_count = 1;
    std::size_t m_step = 1;
    bool m_isComplex = false;
    std::vector<std::uint64_t> m_shape;
};

} // namespace

bool parseHeading(std::string_view field, bool ignoresUnits, CsvHeading* heading, std::string* why)
{
    *heading = CsvHeading();
    std::string_view name = field;
    std::string_view content;
    if (takeBrackets(&name, &content)) {
        const bool isApart = !name.empty() && (name.back() == ' ' || name.back() == '\t');
        if (!isApart && !name.empty() && isIndexList(content))
            name = field;
        else if (!trimmed(content).empty() && !parseUnitsText(trimmed(content), &heading->units, why) &&
                 !ignoresUnits)
            return false;
    }
    heading->name = decoded(trimmed(name));
    takeIndicesAndPart(heading);
    return true;
}

std::vector<CsvColumn> joinHeadings(const std::vector<CsvHeading>& headings)
{
    std::vector<CsvColumn> columns;
    for (std::size_t i = 0; i < headings.size();) {
        Run run(headings, i);
        const bool isPlain = headings[i].part.empty() && headings[i].indices.empty();
        const std::size_t end = i + run.count();
        if (!isPlain && run.isVariable())
            columns.push_back(run.column());
        for (std::size_t k = i; columns.empty() || columns.back().first + columns.back().count < end; ++k)
            columns.push_back({headings[k].name, headings[k].units, k, 1, {}, false});
        i = end;
    }
    return columns;
}

} // namespace Orrery::Host
