#include "hosts/orrery/ElementText.h"

#include <charconv>
#include <complex>
#include <stdexcept>
#include <type_traits>

namespace Orrery::Host {

using namespace Brindle::Quay;

namespace {

void appendScalar(std::string* out, bool value)
{
    *out += value ? "true" : "false";
}

void appendScalar(std::string* out, const std::string& value)
{
    *out += value;
}

// Two words that nobody here interprets.
void appendScalar(std::string* out, const Duration& value)
{
    *out += std::to_string(value.words[0]) + ':' + std::to_string(value.words[1]);
}

void appendScalar(std::string* out, const TimePoint& value)
{
    *out += std::to_string(value.words[0]) + ':' + std::to_string(value.words[1]);
}

template <class T>
std::enable_if_t<std::is_arithmetic_v<T>> appendScalar(std::string* out, T value)
{
    char text[32]; // the longest double takes 24
    if constexpr (sizeof(T) == 1) {
        const auto [end, error] = std::to_chars(text, text + sizeof text, static_cast<int>(value));
        out->append(text, end);
    } else {
        const auto [end, error] = std::to_chars(text, text + sizeof text, value);
        out->append(text, end);
    }
}

// The parts of a complex bool are numbers: "1+0i".
template <class T>
void appendPart(std::string* out, T value)
{
    if constexpr (std::is_same_v<T, bool>)
        *out += value ? '1' : '0';
    else
        appendScalar(out, value);
}

template <class T>
struct Parts
{
    static const T& real(const T& value) { return value; }
};

template <class P>
struct Parts<Complex<P>>
{
    static P real(const Complex<P>& value) { return value.real; }
    static P imaginary(const Complex<P>& value) { return value.imag; }
};

template <class P>
struct Parts<std::complex<P>>
{
    static P real(const std::complex<P>& value) { return value.real(); }
    static P imaginary(const std::complex<P>& value) { return value.imag(); }
};

template <class T>
void appendImaginaryOf(std::string* out, const void* data, std::uint64_t position)
{
    appendPart(out, Parts<T>::imaginary(static_cast<const T*>(data)[position]));
}

template <class T>
void appendRealOf(std::string* out, const void* data, std::uint64_t position)
{
    appendPart(out, Parts<T>::real(static_cast<const T*>(data)[position]));
}

template <class T>
void appendWhole(std::string* out, const void* data, std::uint64_t position)
{
    appendScalar(out, static_cast<const T*>(data)[position]);
}

template <class T>
void appendComplex(std::string* out, const void* data, std::uint64_t position)
{
    appendRealOf<T>(out, data, position);
    const std::size_t sign = out->size();
    appendImaginaryOf<T>(out, data, position);
    if ((*out)[sign] != '-')
        out->insert(sign, 1, '+');
    *out += 'i';
}

struct Row
{
    WellKnownType type;
    const char* name;
    ElementText::Append whole;
    ElementText::Append real;
    ElementText::Append imaginary; // null for what isn't complex
};

template <class T>
Row plainRow(const char* name)
{
    return {WellKnownType::of<T>(), name, &appendWhole<T>, &appendWhole<T>, nullptr};
}

template <class T>
Row complexRow(const char* name)
{
    return {WellKnownType::of<T>(), name, &appendComplex<T>, &appendRealOf<T>, &appendImaginaryOf<T>};
}

const std::vector<Row>& table()
{
    static const std::vector<Row> rows = {
        plainRow<double>("double"),
        plainRow<float>("float"),
        plainRow<std::int8_t>("int8"),
        plainRow<std::int16_t>("int16"),
        plainRow<std::int32_t>("int32"),
        plainRow<std::int64_t>("int64"),
        plainRow<bool>("bool"),
        plainRow<std::uint8_t>("uint8"),
        plainRow<std::uint16_t>("uint16"),
        plainRow<std::uint32_t>("uint32"),
        plainRow<std::uint64_t>("uint64"),
        plainRow<std::string>("text"),
        plainRow<Duration>("duration"),
        plainRow<TimePoint>("time point"),
        complexRow<std::complex<double>>("complex<double>"),
        complexRow<std::complex<float>>("complex<float>"),
        complexRow<Complex<std::int8_t>>("complex<int8>"),
        complexRow<Complex<std::int16_t>>("complex<int16>"),
        complexRow<Complex<std::int32_t>>("complex<int32>"),
        complexRow<Complex<std::int64_t>>("complex<int64>"),
        complexRow<Complex<bool>>("complex<bool>"),
        complexRow<Complex<std::uint8_t>>("complex<uint8>"),
        complexRow<Complex<std::uint16_t>>("complex<uint16>"),
        complexRow<Complex<std::uint32_t>>("complex<uint32>"),
        complexRow<Complex<std::uint64_t>>("complex<uint64>"),
    };
    return rows;
}

const Row* findRow(WellKnownType type)
{
    for (const Row& row : table()) {
        if (row.type == type)
            return &row;
    }
    return nullptr;
}

} // namespace

std::string elementTypeName(WellKnownType type)
{
    const Row* const row = findRow(type);
    if (row)
        return row->name;
    return type.code() == 0 ? "null" : "run-time";
}

std::string shapeText(const std::vector<std::uint64_t>& dimensions)
{
    std::string text;
    for (const std::uint64_t size : dimensions)
        text += (text.empty() ? "" : " x ") + std::to_string(size);
    return text;
}

std::vector<std::uint64_t> dimensionsOf(const BVariant& value)
{
    const auto view = value.getDimensions();
    return {view.begin(), view.end()};
}

ElementText::ElementText(const BVariant& array)
    : m_array(array)
    , m_count(array.elementCount())
{
    if (m_count == 0)
        return;
    const Row* const row = findRow(array.getWellKnownType());
    if (!row)
        throw std::invalid_argument("elements of the type '" + elementTypeName(array.getWellKnownType()) +
                                    "' have no text");
    if (array.getDataOrdering() != DataOrdering::RowMajor)
        m_array = array.reordered(DataOrdering::RowMajor);
    m_data = m_array.constData();
    m_append = row->whole;
    m_appendReal = row->real;
    m_appendImaginary = row->imaginary;
}

bool ElementText::isComplex() const
{
    return m_appendImaginary != nullptr;
}

} // namespace Orrery::Host
