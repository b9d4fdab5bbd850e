#include "hosts/orrery/touchstone/TouchstoneHeader.h"

#include "hosts/orrery/Numbers.h"
#include "hosts/orrery/PlainText.h"

#include <charconv>
#include <cmath>
#include <set>
#include <string>

namespace Orrery::Host {

namespace {

constexpr int s_mostInformation = 1000; // lines

const std::string s_firstLine = "the option line, such as '# GHz S MA R 50', or '[Version] 2.0'";

struct FrequencyUnit
{
    const char* name;
    int exponent;
};

constexpr FrequencyUnit s_frequencyUnits[] = {{"hz", 0}, {"khz", 3}, {"mhz", 6}, {"ghz", 9}};

bool parseCount(std::string_view text, std::uint64_t* count)
{
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, *count);
    return error == std::errc() && stop == end && !text.empty();
}

bool parseResistance(std::string_view text, double* value)
{
    return parseNumber(text, value) && std::isfinite(*value) && *value > 0.0;
}

class HeaderReader
{
public:
    HeaderReader(TouchstoneLines& lines, std::optional<std::size_t> ports, TouchstoneData* data)
        : m_lines(lines)
        , m_portsByName(ports)
        , m_data(*data)
    {
    }

    TouchstoneHeader read();

private:
    void readVersion();
    void readOptions();
    bool takeUnitOrFormat(const std::string& word);
    void takeOnce(const char* what, bool* isThere);
    void readKeywords();
    void takeKeyword(const std::string& name, std::string_view rest);
    void takePorts(std::string_view rest);
    void takeOrder(std::string_view rest);
    void takeMatrix(std::string_view rest);
    void readReferences(std::string_view rest);
    void readInformation();
    std::uint64_t countOf(const std::string& name, std::string_view rest) const;
    void checkAllThere() const;
    void setPortsOfVersion1();

    TouchstoneLines& m_lines;
    std::optional<std::size_t> m_portsByName;
    TouchstoneData& m_data;
    TouchstoneHeader m_header;
    std::set<std::string> m_seen; // keywords, each of which may come once
    bool m_hasUnit = false;
    bool m_hasParameter = false;
    bool m_hasFormat = false;
    bool m_hasResistance = false;
};

TouchstoneHeader HeaderReader::read()
{
    if (!m_lines.next())
        m_lines.failAtEnd(s_firstLine);
    if (m_lines.isKeyword())
        readVersion();
    else
        m_data.version = QStringLiteral("1.0");
    if (!m_lines.isOptions())
        m_lines.failHere(m_header.isVersion2 ? "the option line, such as '# GHz S MA R 50'" : s_firstLine);
    readOptions();
    if (m_header.isVersion2)
        readKeywords();
    else
        setPortsOfVersion1();
    const bool isHybrid = m_data.parameter == 'G' || m_data.parameter == 'H';
    if (isHybrid && m_data.ports != 2)
        m_lines.fail("two ports, which " + std::string(1, m_data.parameter) + "-parameters have",
                     std::to_string(m_data.ports));
    return m_header;
}

void HeaderReader::readVersion()
{
    std::string_view rest;
    if (m_lines.keyword(&rest) != "version")
        m_lines.failHere(s_firstLine);
    if (rest != "2.0" && rest != "2.1")
        m_lines.fail("version 2.0 or 2.1; version 1 has no '[Version]'", inQuotes(rest));
    m_header.isVersion2 = true;
    m_data.version = QString::fromLatin1(rest.data(), static_cast<int>(rest.size()));
    if (!m_lines.next())
        m_lines.failAtEnd("the option line, such as '# GHz S MA R 50'");
}

void HeaderReader::takeOnce(const char* what, bool* isThere)
{
    if (*isThere)
        m_lines.failHere(std::string("one ") + what + " in the option line");
    *isThere = true;
}

bool HeaderReader::takeUnitOrFormat(const std::string& word)
{
    for (const FrequencyUnit& unit : s_frequencyUnits) {
        if (word == unit.name) {
            takeOnce("unit of the frequency", &m_hasUnit);
            m_header.unitExponent = unit.exponent;
            return true;
        }
    }
    if (word != "ri" && word != "ma" && word != "db")
        return false;
    takeOnce("format", &m_hasFormat);
    if (word == "ri")
        m_header.format = TouchstoneFormat::RealImaginary;
    if (word == "db")
        m_header.format = TouchstoneFormat::DecibelAngle;
    return true;
}

void HeaderReader::readOptions()
{
    m_data.options = decoded(m_lines.text());
    m_data.comments = m_lines.comments();
    const std::vector<std::string_view> words = wordsOf(m_lines.text().substr(1));
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string word = lowerCase(words[i]);
        if (takeUnitOrFormat(word))
            continue;
        if (word.size() == 1 && std::string("syzgh").find(word) != std::string::npos) {
            takeOnce("kind of parameter", &m_hasParameter);
            m_data.parameter = static_cast<char>(word.front() - ('a' - 'A'));
        } else if (word == "r") {
            takeOnce("'R'", &m_hasResistance);
            if (i + 1 == words.size() || !parseResistance(words[i + 1], &m_header.resistance))
                m_lines.fail("a resistance above 0 behind 'R'",
                             i + 1 == words.size() ? "the end of the line" : inQuotes(words[i + 1]));
            ++i;
        } else {
            m_lines.fail("an option: Hz, kHz, MHz or GHz; S, Y, Z, G or H; RI, MA or DB; R and a resistance",
                         inQuotes(words[i]));
        }
    }
}

void HeaderReader::setPortsOfVersion1()
{
    if (!m_portsByName)
        m_lines.fail("the number of ports from a name such as 'x.s2p' or from --ports", "neither");
    m_data.ports = *m_portsByName;
    m_data.references.assign(m_data.ports, m_header.resistance);
}

void HeaderReader::readKeywords()
{
    const std::string expected = "'[Network Data]' or a keyword before it";
    while (true) {
        if (!m_lines.next())
            m_lines.failAtEnd(expected);
        if (m_lines.isOptions()) {
            m_lines.failHere("one option line");
        }
        if (!m_lines.isKeyword())
            m_lines.failHere(expected);
        std::string_view rest;
        const std::string name = m_lines.keyword(&rest);
        if (!m_seen.insert(name).second)
            m_lines.fail("each keyword once", "another '[" + printable(name) + "]'");
        if (name == "network data") {
            checkAllThere();
            if (!rest.empty())
                m_lines.fail("the end of the line after '[Network Data]'", inQuotes(rest));
            return;
        }
        takeKeyword(name, rest);
    }
}

void HeaderReader::takeKeyword(const std::string& name, std::string_view rest)
{
    if (name == "number of ports")
        takePorts(rest);
    else if (name == "two-port data order" || name == "two-port order")
        takeOrder(rest);
    else if (name == "number of frequencies")
        m_header.frequencies = countOf("frequencies", rest);
    else if (name == "number of noise frequencies")
        m_header.noiseFrequencies = countOf("noise frequencies", rest);
    else if (name == "reference")
        readReferences(rest);
    else if (name == "matrix format")
        takeMatrix(rest);
    else if (name == "begin information")
        readInformation();
    else if (name == "mixed-mode order")
        m_lines.failHere("single-ended parameters, as mixed-mode ones are not read");
    else
        m_lines.failHere("a keyword of version 2");
}

std::uint64_t HeaderReader::countOf(const std::string& name, std::string_view rest) const
{
    std::uint64_t count = 0;
    if (!parseCount(rest, &count) || count == 0)
        m_lines.fail("the number of " + name + ", 1 or more", inQuotes(rest));
    return count;
}

void HeaderReader::takePorts(std::string_view rest)
{
    const std::uint64_t count = countOf("ports", rest);
    if (count > s_mostPorts)
        m_lines.fail("at most " + std::to_string(s_mostPorts) + " ports", inQuotes(rest));
    m_data.ports = static_cast<std::size_t>(count);
    m_data.references.assign(m_data.ports, m_header.resistance);
    if (m_portsByName && *m_portsByName != m_data.ports)
        m_data.remarks.push_back("line " + std::to_string(m_lines.number()) + ": there are " +
                                 std::to_string(m_data.ports) + " ports, where the name or --ports says " +
                                 std::to_string(*m_portsByName));
}

void HeaderReader::takeOrder(std::string_view rest)
{
    if (rest != "12_21" && rest != "21_12")
        m_lines.fail("'12_21' or '21_12'", inQuotes(rest));
    m_header.is21First = rest == "21_12";
}

void HeaderReader::takeMatrix(std::string_view rest)
{
    const std::string word = lowerCase(rest);
    if (word != "full" && word != "lower" && word != "upper")
        m_lines.fail("'Full', 'Lower' or 'Upper'", inQuotes(rest));
    if (word == "lower")
        m_header.matrix = TouchstoneMatrix::Lower;
    if (word == "upper")
        m_header.matrix = TouchstoneMatrix::Upper;
}

// One resistance for each port, on as many lines as the writer wanted.
void HeaderReader::readReferences(std::string_view rest)
{
    if (m_data.ports == 0)
        m_lines.failHere("'[Number of Ports]' before '[Reference]'");
    std::vector<std::string_view> words = wordsOf(rest);
    for (std::size_t port = 0; port < m_data.ports;) {
        if (port + words.size() > m_data.ports)
            m_lines.failHere("one resistance for each of " + std::to_string(m_data.ports) + " ports");
        for (const std::string_view word : words) {
            if (!parseResistance(word, &m_data.references[port++]))
                m_lines.fail("the resistance of port " + std::to_string(port) + ", above 0", inQuotes(word));
        }
        if (port == m_data.ports)
            return;
        const std::string expected = "the resistance of port " + std::to_string(port + 1);
        if (!m_lines.next())
            m_lines.failAtEnd(expected);
        if (m_lines.isKeyword())
            m_lines.failHere(expected);
        words = m_lines.words();
    }
}

void HeaderReader::readInformation()
{
    while (true) {
        if (!m_lines.next())
            m_lines.failAtEnd("'[End Information]'");
        std::string_view rest;
        if (m_lines.isKeyword() && m_lines.keyword(&rest) == "end information")
            return;
        if (m_data.information.size() < s_mostInformation)
            m_data.information += decoded(m_lines.text());
    }
}

void HeaderReader::checkAllThere() const
{
    if (m_data.ports == 0)
        m_lines.failHere("'[Number of Ports]' before it");
    if (!m_header.frequencies)
        m_lines.failHere("'[Number of Frequencies]' before it");
    const bool hasOrder = m_seen.count("two-port data order") + m_seen.count("two-port order") > 0;
    if (m_data.ports == 2 && m_header.matrix == TouchstoneMatrix::Full && !hasOrder)
        m_lines.failHere("'[Two-Port Data Order]' before it, as there are two ports");
    if (m_data.ports != 2 && hasOrder)
        m_lines.fail("no '[Two-Port Data Order]' for " + std::to_string(m_data.ports) + " ports", "one");
}

} // namespace

TouchstoneHeader readTouchstoneHeader(TouchstoneLines& lines, std::optional<std::size_t> ports,
                                      TouchstoneData* data)
{
    return HeaderReader(lines, ports, data).read();
}

} // namespace Orrery::Host
