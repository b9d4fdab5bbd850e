#include "hosts/orrery/RawHeader.h"

#include "hosts/orrery/PlainText.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <set>
#include <string_view>
#include <utility>

namespace Orrery::Host {

namespace {

constexpr std::uint64_t s_longestHeaderLine = 1U << 20U;
constexpr std::size_t s_longestKey = 40;
constexpr std::size_t s_largestRank = 32;         // what a data file can hold
constexpr std::uint64_t s_shortestColumnLine = 6; // "0 a b" and its line end

std::string lowerCase(std::string_view text)
{
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c); });
    return lower;
}

bool isKeyCharacter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == ' ' ||
           c == '.' || c == '_' || c == '-';
}

bool parseWhole(std::string_view text, std::uint64_t* number)
{
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, *number);
    return error == std::errc() && stop == end && !text.empty();
}

// "2,3" as the dimensions of a vector.
bool parseDimensions(std::string_view text, std::vector<std::uint64_t>* dimensions, std::uint64_t* product)
{
    dimensions->clear();
    *product = 1;
    while (true) {
        const std::size_t comma = text.find(',');
        std::uint64_t size = 0;
        if (dimensions->size() == s_largestRank || !parseWhole(trimmed(text.substr(0, comma)), &size) ||
            __builtin_mul_overflow(*product, size, product))
            return false;
        dimensions->push_back(size);
        if (comma == std::string_view::npos)
            return true;
        text.remove_prefix(comma + 1);
    }
}

// Cuts the next word off `rest`.
std::string_view nextWord(std::string_view* rest)
{
    *rest = trimmed(*rest);
    const std::string_view word = rest->substr(0, rest->find_first_of(" \t"));
    rest->remove_prefix(word.size());
    return word;
}

class HeaderReader
{
public:
    HeaderReader(SourceFile& file, RawHeader* header, bool isFirst)
        : m_file(file)
        , m_header(*header)
        , m_isFirst(isFirst)
    {
    }

    bool read();

private:
    bool nextLine(std::string_view* line);
    std::string_view requireLine(const std::string& expected);
    std::string_view splitKey(std::string_view line, std::string* key) const;
    void takeText(const std::string& key, std::string_view value);
    bool takeCount(const std::string& key, std::string_view value);
    bool takeKnown(const std::string& key, std::string_view value);
    void takeFlags(std::string_view value);
    void takeFlag(const std::string& flag, std::string_view value);
    void takeShape(std::string_view value);
    void readColumns(std::string_view firstLine);
    void readColumn(std::uint64_t index, std::string_view line);
    void takeColumnShape(RawColumn* column, std::string_view attributes, std::string_view line);
    void checkAllThere() const;
    void setShapes();
    void setLayout(bool binary);
    std::string expectedStart() const;

    SourceFile& m_file;
    RawHeader& m_header;
    bool m_isFirst;
    std::set<std::string> m_seen; // keys, each of which may come once
    std::uint64_t m_variables = 0;
    std::vector<std::uint64_t> m_shape; // of a vector that doesn't tell its own
    bool m_isReal = false;
    bool m_isForward = false;
    bool m_isDouble = false;
};

// Keys that may come again, or whose text doesn't matter, aren't remembered.
const std::set<std::string>& singleKeys()
{
    static const std::set<std::string> keys = {"title",         "date",       "plotname",   "flags",
                                               "no. variables", "no. points", "dimensions", "variables"};
    return keys;
}

bool HeaderReader::nextLine(std::string_view* line)
{
    while (m_file.readLine(line, s_longestHeaderLine)) {
        if (line->find('\0') != std::string_view::npos)
            m_file.fail(m_seen.empty() ? expectedStart() : "a header line of text", inQuotes(*line));
        if (!trimmed(*line).empty())
            return true;
    }
    return false;
}

std::string_view HeaderReader::requireLine(const std::string& expected)
{
    std::string_view line;
    if (!nextLine(&line))
        m_file.fail(expected, "the end of the file");
    return line;
}

std::string HeaderReader::expectedStart() const
{
    return m_isFirst ? "'Title:', with which a SPICE raw file begins"
                     : "'Title:' of another plot or the end of the file";
}

std::string_view HeaderReader::splitKey(std::string_view line, std::string* key) const
{
    const std::size_t colon = line.find(':');
    const std::string_view name = trimmed(line.substr(0, colon));
    const bool isKey = colon != std::string_view::npos && !name.empty() && name.size() <= s_longestKey &&
                       std::isalpha(static_cast<unsigned char>(name.front())) != 0 &&
                       std::all_of(name.begin(), name.end(), isKeyCharacter);
    if (!isKey)
        m_file.fail(m_seen.empty() ? expectedStart() : "a header line such as 'No. Points: 10'",
                    inQuotes(line));
    *key = lowerCase(name);
    return trimmed(line.substr(colon + 1));
}

bool HeaderReader::read()
{
    std::string_view line;
    if (!nextLine(&line)) {
        if (m_isFirst)
            m_file.fail(expectedStart(), "the end of the file");
        return false;
    }
    while (true) {
        std::string key;
        const std::string_view value = splitKey(line, &key);
        if (key == "binary" || key == "values") {
            checkAllThere();
            if (!value.empty())
                m_file.fail("the end of the line after '" + key + ":'", inQuotes(value));
            setLayout(key == "binary");
            setShapes();
            return true;
        }
        if (singleKeys().count(key) != 0 && !m_seen.insert(key).second)
            m_file.fail("the values of the plot before another '" + key + ":'", inQuotes(line));
        if (!takeKnown(key, value) && m_seen.empty())
            m_file.fail(expectedStart(), inQuotes(line));
        line = requireLine("'Binary:' or 'Values:'");
    }
}

bool HeaderReader::takeKnown(const std::string& key, std::string_view value)
{
    if (key == "flags")
        takeFlags(value);
    else if (key == "dimensions")
        takeShape(value);
    else if (key == "variables")
        readColumns(value);
    else if (!takeCount(key, value))
        takeText(key, value);
    return m_seen.count(key) != 0;
}

void HeaderReader::takeText(const std::string& key, std::string_view value)
{
    if (key == "title")
        m_header.title = decoded(value);
    else if (key == "date")
        m_header.date = decoded(value);
    else if (key == "plotname")
        m_header.plotName = decoded(value);
    else if (key == "command")
        m_header.commands += decoded(value);
    else if (key == "option")
        m_header.options += decoded(value);
}

bool HeaderReader::takeCount(const std::string& key, std::string_view value)
{
    const bool isVariables = key == "no. variables";
    if (!isVariables && key != "no. points")
        return false;
    std::uint64_t count = 0;
    if (!parseWhole(value, &count) || (isVariables && count == 0))
        m_file.fail(isVariables ? "the number of variables, 1 or more" : "the number of points, 0 or more",
                    inQuotes(value));
    const std::uint64_t room = m_file.remaining() / s_shortestColumnLine + 1;
    if (isVariables && count > room)
        m_file.fail("a number of variables that the rest of the file has room for", inQuotes(value));
    (isVariables ? m_variables : m_header.points) = count;
    return true;
}

void HeaderReader::takeFlags(std::string_view value)
{
    m_header.flags = decoded(value);
    for (std::string_view rest = value; !trimmed(rest).empty();)
        takeFlag(lowerCase(nextWord(&rest)), value);
    if (m_isReal == m_header.isComplex)
        m_file.fail("either 'real' or 'complex' among the flags", inQuotes(value));
}

void HeaderReader::takeFlag(const std::string& flag, std::string_view value)
{
    if (flag == "real")
        m_isReal = true;
    else if (flag == "complex")
        m_header.isComplex = true;
    else if (flag == "unpadded")
        m_header.isPadded = false;
    else if (flag == "forward")
        m_isForward = true;
    else if (flag == "double")
        m_isDouble = true;
    else if (flag == "fastaccess" || flag == "compressed")
        m_file.fail("values that stand point by point, each whole", inQuotes(value));
}

void HeaderReader::takeShape(std::string_view value)
{
    std::uint64_t product = 0;
    if (!parseDimensions(value, &m_shape, &product))
        m_file.fail("dimensions such as '2,3'", inQuotes(value));
}

void HeaderReader::readColumns(std::string_view firstLine)
{
    if (m_seen.count("no. variables") == 0)
        m_file.fail("'No. Variables:' before the variables", "'Variables:'");
    for (std::uint64_t i = 0; i < m_variables; ++i) {
        const std::string which = "variable " + std::to_string(i) + " of " + std::to_string(m_variables);
        const bool isSameLine = i == 0 && !firstLine.empty();
        readColumn(i, isSameLine ? firstLine : requireLine(which + ": its number, name and type"));
    }
}

// "<number> <name> <type>[ <attribute>=<text>...]". Where tabs part them, a name may have blanks in it.
void HeaderReader::readColumn(std::uint64_t index, std::string_view line)
{
    const std::string which = "variable " + std::to_string(index) + " of " + std::to_string(m_variables);
    std::string_view rest = line;
    std::uint64_t number = 0;
    if (!parseWhole(nextWord(&rest), &number) || number != index)
        m_file.fail(which + ": its number, name and type", inQuotes(trimmed(line)));
    rest = trimmed(rest);
    const std::size_t tab = rest.find('\t');
    std::string_view name = tab != std::string_view::npos ? trimmed(rest.substr(0, tab)) : nextWord(&rest);
    if (tab != std::string_view::npos)
        rest.remove_prefix(tab);
    const std::string_view type = nextWord(&rest);
    if (name.empty() || type.empty())
        m_file.fail(which + ": its number, name and type", inQuotes(trimmed(line)));
    RawColumn column;
    column.name = decoded(name);
    column.type = decoded(type);
    takeColumnShape(&column, rest, line);
    m_header.columns.push_back(std::move(column));
}

void HeaderReader::takeColumnShape(RawColumn* column, std::string_view attributes, std::string_view line)
{
    const std::string_view key = "dims=";
    while (!trimmed(attributes).empty()) {
        const std::string_view word = nextWord(&attributes);
        if (word.substr(0, key.size()) != key)
            continue;
        if (!parseDimensions(word.substr(key.size()), &column->dimensions, &column->length))
            m_file.fail("dimensions such as 'dims=2,3'", inQuotes(trimmed(line)));
    }
}

void HeaderReader::checkAllThere() const
{
    const std::pair<const char*, const char*> needed[] = {{"plotname", "'Plotname:'"},
                                                          {"flags", "'Flags:'"},
                                                          {"no. variables", "'No. Variables:'"},
                                                          {"no. points", "'No. Points:'"},
                                                          {"variables", "'Variables:'"}};
    for (const auto& [key, text] : needed) {
        if (m_seen.count(key) == 0)
            m_file.fail(std::string(text) + " before the values", "none");
    }
}

// A program that writes its text in two bytes a character, or runs "forward", writes all but the first vector of
// a real plot as floats, unless it says "double".
void HeaderReader::setLayout(bool binary)
{
    if (!binary) {
        m_header.layout = RawLayout::Text;
        return;
    }
    const bool isNarrow = !m_header.isComplex && !m_isDouble && (m_file.isUtf16() || m_isForward);
    m_header.layout = isNarrow ? RawLayout::NarrowBinary : RawLayout::Binary;
}

void HeaderReader::setShapes()
{
    std::uint64_t product = m_shape.empty() ? 0 : 1;
    for (const std::uint64_t size : m_shape)
        product *= size; // tested for overflow when it was read
    const std::vector<std::uint64_t> shape = product == m_header.points && !m_shape.empty()
                                                 ? m_shape
                                                 : std::vector<std::uint64_t>{m_header.points};
    for (RawColumn& column : m_header.columns) {
        if (column.dimensions.empty()) {
            column.dimensions = shape;
            column.length = m_header.points;
        }
        if (column.length > m_header.points)
            m_file.fail("vectors of at most " + std::to_string(m_header.points) + " points",
                        std::to_string(column.length) + " in " + inQuotes(column.name.toStdString()));
    }
}

} // namespace

bool readRawHeader(SourceFile& file, RawHeader* header, bool isFirst)
{
    *header = RawHeader();
    return HeaderReader(file, header, isFirst).read();
}

} // namespace Orrery::Host
