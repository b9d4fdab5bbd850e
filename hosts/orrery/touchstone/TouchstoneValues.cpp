#include "hosts/orrery/touchstone/TouchstoneValues.h"

#include "hosts/orrery/Numbers.h"
#include "hosts/orrery/PlainText.h"
#include "hosts/orrery/touchstone/TouchstoneNumbers.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

namespace Orrery::Host {

namespace {

constexpr std::size_t s_noiseNumbers = 5;

/// An element of the matrix that a pair of numbers tells.
struct Place
{
    std::size_t row;
    std::size_t column;
};

std::vector<Place> placesOf(const TouchstoneHeader& header, std::size_t ports)
{
    std::vector<Place> places;
    for (std::size_t row = 0; row < ports; ++row) {
        const std::size_t begin = header.matrix == TouchstoneMatrix::Upper ? row : 0;
        const std::size_t end = header.matrix == TouchstoneMatrix::Lower ? row + 1 : ports;
        for (std::size_t column = begin; column < end; ++column)
            places.push_back({row, column});
    }
    if (ports == 2 && header.matrix == TouchstoneMatrix::Full && header.is21First)
        std::swap(places[1], places[2]);
    return places;
}

/// What a normalized element has been divided by.
enum class Normalization
{
    None,
    Resistance,
    Conductance,
};

Normalization normalizationOf(char parameter, const Place& place)
{
    switch (parameter) {
    case 'Y':
        return Normalization::Conductance;
    case 'Z':
        return Normalization::Resistance;
    case 'G':
    case 'H':
        if (place.row != place.column)
            return Normalization::None;
        return (place.row == 0) == (parameter == 'H') ? Normalization::Resistance
                                                      : Normalization::Conductance;
    default:
        return Normalization::None;
    }
}

// Divided by the resistance, not multiplied by the conductance, so that it is rounded once.
std::complex<double> withoutNormalization(const std::complex<double>& value, Normalization normalization,
                                          double resistance)
{
    switch (normalization) {
    case Normalization::Resistance:
        return value * resistance;
    case Normalization::Conductance:
        return value / resistance;
    default:
        return value;
    }
}

class ValuesReader
{
public:
    ValuesReader(TouchstoneLines& lines, const TouchstoneHeader& header, TouchstoneData* data)
        : m_lines(lines)
        , m_header(header)
        , m_data(*data)
        , m_places(placesOf(header, data->ports))
        , m_pairs(m_places.size())
    {
        for (const Place& place : m_places)
            m_normalizations.push_back(m_header.isVersion2 ? Normalization::None
                                                           : normalizationOf(m_data.parameter, place));
    }

    void read();

private:
    bool nextDataLine();
    void readNetwork();
    bool startsNoise() const;
    void readPoint();
    void takeNumbers(std::size_t first);
    void addPoint(double frequency);
    void readNoise();
    void takeNoise(double previous);
    double frequencyAfter(double previous, bool hasPrevious);
    std::complex<double> valueOf(double a, double b) const;
    void readEnd();
    void requireCount(const std::optional<std::uint64_t>& announced, std::size_t count, const char* what,
                      bool isAtEnd) const;

    TouchstoneLines& m_lines;
    const TouchstoneHeader& m_header;
    TouchstoneData& m_data;
    std::vector<Place> m_places;
    std::vector<Normalization> m_normalizations; // of each place
    std::vector<std::complex<double>> m_pairs;   // numbers of the present point as they stand
    std::size_t m_numbers = 0;                   // of them, those that are there
    bool m_isOver = false;                       // the file has no more lines
    bool m_hasToldOptions = false;               // a remark is made once, of however many lines
    bool m_hasToldTwice = false;
};

void ValuesReader::read()
{
    m_data.values.resize(m_data.ports * m_data.ports);
    readNetwork();
    if (m_header.isVersion2)
        readEnd();
    if (m_data.frequencies.empty())
        m_lines.fail("the values of a frequency", "none");
    if (!m_header.isVersion2 && !m_lines.isLineEnded())
        m_data.remarks.emplace_back(
            "the last line has no end; if the file was cut off, so is its last number");
}

// The next line of numbers; false for a keyword, and at the end.
bool ValuesReader::nextDataLine()
{
    while (true) {
        m_isOver = !m_lines.next();
        if (m_isOver)
            return false;
        if (m_lines.isOptions()) {
            if (!std::exchange(m_hasToldOptions, true))
                m_data.remarks.push_back("line " + std::to_string(m_lines.number()) +
                                         ": another option line, which doesn't count");
            continue;
        }
        if (m_lines.isKeyword() && !m_header.isVersion2)
            m_lines.failHere("numbers, as keywords need '[Version] 2.0' in the first line");
        return !m_lines.isKeyword();
    }
}

void ValuesReader::readNetwork()
{
    while (nextDataLine()) {
        if (startsNoise()) {
            m_lines.putBack();
            return readNoise();
        }
        readPoint();
    }
}

// Version 1 has no word for it: the frequency goes down, and a line has another length.
bool ValuesReader::startsNoise() const
{
    double frequency = 0.0;
    return !m_header.isVersion2 && m_data.ports == 2 && !m_data.frequencies.empty() &&
           m_lines.words().size() == s_noiseNumbers &&
           parseScaled(m_lines.words().front(), m_header.unitExponent, &frequency) &&
           frequency <= m_data.frequencies.back();
}

double ValuesReader::frequencyAfter(double previous, bool hasPrevious)
{
    const std::string_view word = m_lines.words().front();
    double frequency = 0.0;
    if (!parseScaled(word, m_header.unitExponent, &frequency) || !std::isfinite(frequency) || frequency < 0.0)
        m_lines.fail("a frequency, 0 or more", inQuotes(word));
    if (hasPrevious && frequency < previous)
        m_lines.fail("a frequency above the one before", inQuotes(word));
    if (hasPrevious && frequency == previous && !std::exchange(m_hasToldTwice, true))
        m_data.remarks.push_back("line " + std::to_string(m_lines.number()) + ": the frequency " +
                                 inQuotes(word) + " comes again");
    return frequency;
}

void ValuesReader::readPoint()
{
    if (m_header.frequencies && m_data.frequencies.size() == *m_header.frequencies)
        m_lines.failHere("'[Noise Data]' or '[End]' after " + std::to_string(*m_header.frequencies) +
                         " frequencies");
    const std::uint64_t start = m_lines.number();
    const std::size_t wanted = 2 * m_pairs.size();
    if (m_lines.words().size() % 2 == 0)
        m_lines.fail("a frequency and pairs of numbers",
                     "a line of " + std::to_string(m_lines.words().size()) + " numbers");
    const double previous = m_data.frequencies.empty() ? 0.0 : m_data.frequencies.back();
    const double frequency = frequencyAfter(previous, !m_data.frequencies.empty());
    m_numbers = 0;
    takeNumbers(1);
    while (m_numbers < wanted) {
        const std::string expected = std::to_string(wanted - m_numbers) +
                                     " more numbers of the point that begins in line " +
                                     std::to_string(start);
        if (!nextDataLine())
            m_lines.fail(expected, m_isOver ? "the end of the file" : inQuotes(m_lines.text()));
        if (m_lines.words().size() % 2 != 0)
            m_lines.fail(expected, "a line of " + std::to_string(m_lines.words().size()));
        takeNumbers(0);
    }
    addPoint(frequency);
}

// The numbers of this line from `first` on, which come in pairs.
void ValuesReader::takeNumbers(std::size_t first)
{
    const std::vector<std::string_view>& words = m_lines.words();
    const std::size_t room = 2 * m_pairs.size() - m_numbers;
    if (words.size() - first > room)
        m_lines.fail("a point of " + std::to_string(2 * m_pairs.size()) +
                         " numbers after its frequency (ports: " + std::to_string(m_data.ports) + ")",
                     std::to_string(words.size() - first - room) + " more");
    for (std::size_t i = first; i < words.size(); i += 2) {
        double parts[2] = {0.0, 0.0};
        for (std::size_t k = 0; k < 2; ++k) {
            if (!parseNumber(words[i + k], &parts[k]))
                m_lines.fail("a number", inQuotes(words[i + k]));
        }
        m_pairs[m_numbers / 2] = {parts[0], parts[1]};
        m_numbers += 2;
    }
}

std::complex<double> ValuesReader::valueOf(double a, double b) const
{
    switch (m_header.format) {
    case TouchstoneFormat::RealImaginary:
        return {a, b};
    case TouchstoneFormat::DecibelAngle:
        return fromPolar(magnitudeOf(a), b);
    default:
        return fromPolar(a, b);
    }
}

void ValuesReader::addPoint(double frequency)
{
    m_data.frequencies.push_back(frequency);
    for (std::size_t i = 0; i < m_places.size(); ++i) {
        const Place& place = m_places[i];
        const std::complex<double> value = withoutNormalization(valueOf(m_pairs[i].real(), m_pairs[i].imag()),
                                                                m_normalizations[i], m_header.resistance);
        m_data.values[place.row * m_data.ports + place.column].push_back(value);
        if (m_header.matrix != TouchstoneMatrix::Full && place.row != place.column)
            m_data.values[place.column * m_data.ports + place.row].push_back(value);
    }
}

void ValuesReader::readNoise()
{
    m_data.noise.emplace();
    while (nextDataLine()) {
        const std::vector<double>& frequencies = m_data.noise->frequencies;
        if (m_header.noiseFrequencies && frequencies.size() == *m_header.noiseFrequencies)
            m_lines.failHere("'[End]' after " + std::to_string(*m_header.noiseFrequencies) +
                             " noise frequencies");
        takeNoise(frequencies.empty() ? 0.0 : frequencies.back());
    }
}

void ValuesReader::takeNoise(double previous)
{
    TouchstoneNoise& noise = *m_data.noise;
    const std::vector<std::string_view>& words = m_lines.words();
    if (words.size() != s_noiseNumbers)
        m_lines.fail("the 5 numbers of a noise frequency", "a line of " + std::to_string(words.size()));
    const double frequency = frequencyAfter(previous, !noise.frequencies.empty());
    double numbers[s_noiseNumbers] = {};
    for (std::size_t i = 1; i < s_noiseNumbers; ++i) {
        if (!parseNumber(words[i], &numbers[i]))
            m_lines.fail("a number", inQuotes(words[i]));
    }
    noise.frequencies.push_back(frequency);
    noise.minimumFigures.push_back(numbers[1]);
    noise.optimum.push_back(fromPolar(numbers[2], numbers[3]));
    noise.resistances.push_back(m_header.isVersion2 ? numbers[4] : numbers[4] * m_header.resistance);
}

void ValuesReader::requireCount(const std::optional<std::uint64_t>& announced, std::size_t count,
                                const char* what, bool isAtEnd) const
{
    if (!announced || count == *announced)
        return;
    m_lines.fail(std::to_string(*announced - count) + " more of " + std::to_string(*announced) + " " + what,
                 isAtEnd ? "the end of the file" : inQuotes(m_lines.text()));
}

// Of version 2, what stands behind the network data: "[Noise Data]" and "[End]".
void ValuesReader::readEnd()
{
    requireCount(m_header.frequencies, m_data.frequencies.size(), "frequencies", m_isOver);
    std::string_view rest;
    if (!m_isOver && m_lines.keyword(&rest) == "noise data") {
        if (m_data.ports != 2)
            m_lines.fail("noise data of two ports only", std::to_string(m_data.ports) + " ports");
        if (!m_header.noiseFrequencies)
            m_lines.failHere("'[Number of Noise Frequencies]' before '[Network Data]'");
        readNoise();
    }
    const std::size_t count = m_data.noise ? m_data.noise->frequencies.size() : 0;
    requireCount(m_header.noiseFrequencies, count, "noise frequencies", m_isOver);
    if (m_isOver)
        m_lines.failAtEnd("'[End]'");
    if (m_lines.keyword(&rest) != "end")
        m_lines.failHere("'[End]'");
    if (m_lines.next())
        m_lines.failHere("the end of the file after '[End]'");
}

} // namespace

void readTouchstoneValues(TouchstoneLines& lines, const TouchstoneHeader& header, TouchstoneData* data)
{
    ValuesReader(lines, header, data).read();
}

} // namespace Orrery::Host
