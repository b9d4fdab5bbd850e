#include "hosts/orrery/RawValues.h"

#include "foundations/variant/VariantOperations.h"
#include "foundations/variant/WellKnownType.h"
#include "hosts/orrery/PlainText.h"

#include <algorithm>
#include <charconv>
#include <complex>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>

namespace Orrery::Host {

using Brindle::Quay::BVariant;
using Brindle::Quay::WellKnownType;

namespace {

constexpr std::uint64_t s_blockSize = 512U << 10U; // rows that are spread while they are in the cache
constexpr std::size_t s_tile = 8;                  // columns that are spread at once
constexpr std::uint64_t s_noLimit = std::numeric_limits<std::uint64_t>::max();

// Where the values of one vector come from and go to.
struct Target
{
    char* to = nullptr;      // place of the next value
    std::size_t width = 0;   // bytes of a value
    std::uint64_t left = 0;  // values that are still to come
    std::size_t inPoint = 0; // offset of the value in the bytes of a point
};

// Points [begin, end) that all have a value of the same vectors.
struct Stretch
{
    std::uint64_t begin;
    std::uint64_t end;
    std::vector<std::size_t> columns;
};

// a + b * c, or the largest number.
std::uint64_t addProduct(std::uint64_t a, std::uint64_t b, std::uint64_t c)
{
    std::uint64_t product = 0;
    std::uint64_t sum = 0;
    if (__builtin_mul_overflow(b, c, &product) || __builtin_add_overflow(a, product, &sum))
        return s_noLimit;
    return sum;
}

WellKnownType elementType(const RawHeader& header, std::size_t column)
{
    if (header.isComplex)
        return WellKnownType::of<std::complex<double>>();
    if (header.layout == RawLayout::NarrowBinary && column > 0)
        return WellKnownType::of<float>();
    return WellKnownType::of<double>();
}

std::size_t elementWidth(const RawHeader& header, std::size_t column)
{
    if (header.isComplex)
        return sizeof(std::complex<double>);
    return header.layout == RawLayout::NarrowBinary && column > 0 ? sizeof(float) : sizeof(double);
}

std::uint64_t storedLength(const RawHeader& header, const RawColumn& column)
{
    return header.isPadded ? header.points : column.length;
}

// In a file without padding the vectors drop out one after another as they end.
std::vector<Stretch> stretches(const RawHeader& header)
{
    std::vector<std::uint64_t> ends;
    for (const RawColumn& column : header.columns)
        ends.push_back(storedLength(header, column));
    ends.push_back(header.points);
    std::sort(ends.begin(), ends.end());
    ends.erase(std::unique(ends.begin(), ends.end()), ends.end());

    std::vector<Stretch> all;
    std::uint64_t begin = 0;
    for (const std::uint64_t end : ends) {
        Stretch stretch{begin, end, {}};
        for (std::size_t i = 0; i < header.columns.size(); ++i) {
            if (storedLength(header, header.columns[i]) > begin)
                stretch.columns.push_back(i);
        }
        begin = end;
        if (stretch.begin < stretch.end)
            all.push_back(std::move(stretch));
    }
    return all;
}

// The fewest bytes that the values can take; for binary ones, exactly what they take.
std::uint64_t bytesNeeded(const RawHeader& header)
{
    const bool isText = header.layout == RawLayout::Text;
    std::uint64_t bytes = isText ? addProduct(0, 2, header.points) : 0; // a digit and a blank for each point
    for (std::size_t i = 0; i < header.columns.size(); ++i) {
        const std::size_t shortestText = header.isComplex ? 4 : 2; // "0,0" or "0", and a blank
        bytes = addProduct(bytes, isText ? shortestText : elementWidth(header, i),
                           storedLength(header, header.columns[i]));
    }
    return bytes;
}

void requireRoom(const SourceFile& file, const RawHeader& header)
{
    const std::uint64_t needed = bytesNeeded(header);
    const bool isText = header.layout == RawLayout::Text;
    if (needed <= file.remaining())
        return;
    const std::string count = needed == s_noLimit
                                  ? "more bytes than there can be"
                                  : (isText ? "at least " : "") + std::to_string(needed) + " bytes";
    file.fail(count + " of values (points: " + std::to_string(header.points) +
                  ", variables: " + std::to_string(header.columns.size()) + ")",
              std::to_string(file.remaining()));
}

std::vector<BVariant> makeArrays(const RawHeader& header, std::vector<Target>* targets)
{
    std::vector<BVariant> arrays;
    arrays.reserve(header.columns.size());
    for (std::size_t i = 0; i < header.columns.size(); ++i) {
        const RawColumn& column = header.columns[i];
        arrays.push_back(
            createArray(elementType(header, i), column.dimensions, Brindle::Quay::DataOrdering::RowMajor));
        arrays.back().detach();
        char* const to = column.length > 0 ? static_cast<char*>(arrays.back().mutableData()) : nullptr;
        targets->push_back({to, elementWidth(header, i), column.length, 0});
    }
    return arrays;
}

// --- binary ---------------------------------------------------------------------------------------------------

template <std::size_t Width, std::size_t Count>
void spreadTile(const char* points, std::size_t pointSize, std::size_t count, Target* const* targets)
{
    for (std::size_t row = 0; row < count; ++row) {
        const char* const point = points + row * pointSize;
        for (std::size_t i = 0; i < Count; ++i)
            std::memcpy(targets[i]->to + row * Width, point + targets[i]->inPoint, Width);
    }
}

template <std::size_t Width>
void spreadSome(const char* points, std::size_t pointSize, std::size_t count, Target* const* targets,
                std::size_t targetCount)
{
    if (targetCount == s_tile) {
        spreadTile<Width, s_tile>(points, pointSize, count, targets);
        return;
    }
    for (std::size_t i = 0; i < targetCount; ++i)
        spreadTile<Width, 1>(points, pointSize, count, targets + i);
}

void spreadWidth(const char* points, std::size_t pointSize, std::size_t count, Target* const* targets,
                 std::size_t targetCount)
{
    switch (targets[0]->width) {
    case sizeof(float):
        return spreadSome<sizeof(float)>(points, pointSize, count, targets, targetCount);
    case sizeof(double):
        return spreadSome<sizeof(double)>(points, pointSize, count, targets, targetCount);
    default:
        return spreadSome<sizeof(std::complex<double>)>(points, pointSize, count, targets, targetCount);
    }
}

// Neighbours of one width that take the same number of values are spread together, eight at a time: a cache line
// of a point is then read once.
void spread(const char* points, std::size_t pointSize, std::uint64_t count,
            const std::vector<Target*>& targets)
{
    for (std::size_t i = 0; i < targets.size();) {
        const std::uint64_t taken = std::min(count, targets[i]->left);
        std::size_t end = i + 1;
        while (end < targets.size() && end - i < s_tile && targets[end]->width == targets[i]->width &&
               std::min(count, targets[end]->left) == taken)
            ++end;
        if (taken > 0)
            spreadWidth(points, pointSize, static_cast<std::size_t>(taken), targets.data() + i, end - i);
        for (; i < end; ++i) {
            targets[i]->to += taken * targets[i]->width;
            targets[i]->left -= taken;
        }
    }
}

void readBinaryStretch(SourceFile& file, const Stretch& stretch, std::vector<Target>* all)
{
    std::vector<Target*> targets;
    std::size_t pointSize = 0;
    for (const std::size_t column : stretch.columns) {
        targets.push_back(&(*all)[column]);
        targets.back()->inPoint = pointSize;
        pointSize += targets.back()->width;
    }
    if (targets.empty())
        return;
    const std::uint64_t points = stretch.end - stretch.begin;
    const std::uint64_t inBlock = std::min(points, std::max<std::uint64_t>(1, s_blockSize / pointSize));
    std::vector<char> block(static_cast<std::size_t>(inBlock) * pointSize);
    for (std::uint64_t done = 0; done < points;) {
        const std::uint64_t count = std::min(inBlock, points - done);
        file.read(block.data(), count * pointSize);
        spread(block.data(), pointSize, count, targets);
        done += count;
    }
}

// --- text -----------------------------------------------------------------------------------------------------

// Hands out the words of the lines that follow.
class WordReader
{
public:
    explicit WordReader(SourceFile& file)
        : m_file(file)
    {
    }

    // Errors: false at the end of the file.
    bool next(std::string_view* word);

    // Nothing may stand behind the last word on its line, and the line must have an end.
    void finish();

private:
    static bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r'; }

    SourceFile& m_file;
    std::string_view m_rest;
};

bool WordReader::next(std::string_view* word)
{
    while (true) {
        std::size_t begin = 0;
        while (begin < m_rest.size() && isBlank(m_rest[begin]))
            ++begin;
        if (begin < m_rest.size()) {
            std::size_t end = begin;
            while (end < m_rest.size() && !isBlank(m_rest[end]))
                ++end;
            *word = m_rest.substr(begin, end - begin);
            m_rest.remove_prefix(end);
            return true;
        }
        if (!m_file.readLine(&m_rest, s_noLimit))
            return false;
    }
}

void WordReader::finish()
{
    m_rest = trimmed(m_rest);
    if (!m_rest.empty())
        m_file.fail("the end of the line after the last value", inQuotes(m_rest));
    if (!m_file.isLineEnded()) // the last digits may be missing, and nothing else would tell
        m_file.fail("the end of the line after the last value", "the end of the file");
}

// One number up to `end` or a comma; returns where it stopped, or null if there is none.
const char* parseNumber(const char* begin, const char* end, double* value)
{
    if (begin + 1 < end && *begin == '+' && begin[1] != '-')
        ++begin;
    const auto [stop, error] = std::from_chars(begin, end, *value);
    return error == std::errc() ? stop : nullptr;
}

bool parseValue(std::string_view word, bool isComplex, double* values)
{
    const char* const end = word.data() + word.size();
    const char* stop = parseNumber(word.data(), end, values);
    if (isComplex && stop) {
        if (stop == end || *stop != ',')
            return false;
        stop = parseNumber(stop + 1, end, values + 1);
    }
    return stop == end;
}

class TextReader
{
public:
    TextReader(SourceFile& file, const RawHeader& header)
        : m_file(file)
        , m_words(file)
        , m_header(header)
    {
    }

    void read(std::vector<Target>* targets);

private:
    void readPoint(std::uint64_t point, const Stretch& stretch, std::vector<Target>* targets);
    void readNumber(std::uint64_t point);
    void readValue(std::uint64_t point, std::size_t column, Target* target);

    SourceFile& m_file;
    WordReader m_words;
    const RawHeader& m_header;
};

void TextReader::read(std::vector<Target>* targets)
{
    for (const Stretch& stretch : stretches(m_header)) {
        for (std::uint64_t point = stretch.begin; point < stretch.end; ++point)
            readPoint(point, stretch, targets);
    }
    m_words.finish();
}

void TextReader::readPoint(std::uint64_t point, const Stretch& stretch, std::vector<Target>* targets)
{
    readNumber(point);
    for (const std::size_t column : stretch.columns)
        readValue(point, column, &(*targets)[column]);
}

void TextReader::readNumber(std::uint64_t point)
{
    std::string_view word;
    const bool isThere = m_words.next(&word);
    std::uint64_t number = 0;
    const char* const end = word.data() + word.size();
    if (isThere) {
        const auto [stop, error] = std::from_chars(word.data(), end, number);
        if (error == std::errc() && stop == end && number == point)
            return;
    }
    m_file.fail("point number " + std::to_string(point) + " of " + std::to_string(m_header.points),
                isThere ? inQuotes(word) : "the end of the file");
}

void TextReader::readValue(std::uint64_t point, std::size_t column, Target* target)
{
    std::string_view word;
    const bool isThere = m_words.next(&word);
    double values[2] = {0.0, 0.0};
    if (!isThere || !parseValue(word, m_header.isComplex, values)) {
        m_file.fail(std::string(m_header.isComplex ? "a value 'real,imaginary'" : "a value") + " of " +
                        inQuotes(m_header.columns[column].name.toStdString()) + " at point " +
                        std::to_string(point),
                    isThere ? inQuotes(word) : "the end of the file");
    }
    if (target->left == 0)
        return; // padding
    std::memcpy(target->to, values, target->width);
    target->to += target->width;
    --target->left;
}

} // namespace

std::vector<BVariant> readRawValues(SourceFile& file, const RawHeader& header)
{
    requireRoom(file, header);
    std::vector<Target> targets;
    std::vector<BVariant> arrays = makeArrays(header, &targets);
    if (header.layout == RawLayout::Text) {
        TextReader(file, header).read(&targets);
        return arrays;
    }
    for (const Stretch& stretch : stretches(header))
        readBinaryStretch(file, stretch, &targets);
    return arrays;
}

} // namespace Orrery::Host
