#include "hosts/orrery/CurveReader.h"

#include "hosts/orrery/Failure.h"
#include "hosts/orrery/NumberReader.h"
#include "hosts/orrery/PlainText.h"
#include "hosts/orrery/UnitText.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

namespace Orrery::Host {

namespace {

constexpr std::uint64_t s_mostValues = 100'000'000;
constexpr std::uint64_t s_blockLength = 1U << 16U;
constexpr std::uint64_t s_parts = 1600; // one for each column of pixels of a picture

/// Values of a variable as they are shown.
class Coordinates
{
public:
    Coordinates(const Variable& variable, const std::optional<Units>& target)
        : m_variable(variable)
        , m_reader(variable)
        , m_units(unitsOf(variable))
        , m_target(target)
    {
        if (m_target && !m_units)
            m_target.reset();
        if (m_target)
            requireCommensurable(*m_units, *m_target);
    }

    std::uint64_t count() const { return m_reader.count(); }
    bool isComplex() const { return m_reader.isComplex(); }

    const std::vector<double>& readMagnitudes(std::uint64_t begin, std::uint64_t end);

    /// Errors: Failure for a value with an imaginary part.
    const std::vector<double>& readReal(std::uint64_t begin, std::uint64_t end);

private:
    void convert();

    const Variable& m_variable;
    NumberReader m_reader;
    std::optional<Units> m_units;
    std::optional<Units> m_target;
    std::vector<std::complex<double>> m_numbers;
    std::vector<double> m_values;
};

const std::vector<double>& Coordinates::readMagnitudes(std::uint64_t begin, std::uint64_t end)
{
    m_reader.read(begin, end, &m_numbers);
    m_values.clear();
    for (const std::complex<double>& number : m_numbers)
        m_values.push_back(m_reader.isComplex() ? std::abs(number) : number.real());
    convert();
    return m_values;
}

const std::vector<double>& Coordinates::readReal(std::uint64_t begin, std::uint64_t end)
{
    m_reader.read(begin, end, &m_numbers);
    m_values.clear();
    for (const std::complex<double>& number : m_numbers) {
        if (number.imag() != 0.0)
            throw Failure("the axis " + inQuotes(m_variable.GetName().toStdString()) + " has complex values");
        m_values.push_back(number.real());
    }
    convert();
    return m_values;
}

void Coordinates::convert()
{
    if (!m_target || *m_target == *m_units)
        return;
    for (double& value : m_values)
        m_units->ConvertTo(*m_target, value, &value);
}

/// Keeps of a run of points what shows: the first, the lowest, the highest and the last, in their order.
class PointSieve
{
public:
    PointSieve(std::uint64_t partLength, std::vector<QVector<QPointF>>* pieces)
        : m_partLength(partLength)
        , m_pieces(pieces)
    {
    }

    void add(const QPointF& point);

    /// The next point begins a new piece.
    void interrupt();

private:
    struct Seen
    {
        QPointF point;
        std::uint64_t number = 0;
    };

    bool beginsAnew(const QPointF& point) const;
    void keepPart();

    std::uint64_t m_partLength;
    std::vector<QVector<QPointF>>* m_pieces;
    std::uint64_t m_count = 0; // of the present part
    Seen m_first;
    Seen m_lowest;
    Seen m_highest;
    Seen m_last;
    bool m_isInside = false; // a piece has been begun
    double m_pieceStart = 0.0;
    double m_direction = 0.0;
};

// A nested sweep brings its inner axis back to the start, which a line must not follow.
bool PointSieve::beginsAnew(const QPointF& point) const
{
    const double step = point.x() - m_last.point.x();
    const double length = m_last.point.x() - m_pieceStart;
    return step * m_direction < 0.0 && std::abs(step) >= 0.95 * std::abs(length);
}

void PointSieve::add(const QPointF& point)
{
    if (m_isInside && m_direction != 0.0 && beginsAnew(point))
        interrupt();
    const std::uint64_t number = m_count++;
    const Seen seen = {point, number};
    if (!m_isInside) {
        m_pieces->emplace_back();
        m_pieceStart = point.x();
        m_direction = 0.0;
    } else if (point.x() != m_last.point.x()) {
        m_direction = point.x() - m_last.point.x();
    }
    m_isInside = true;
    if (number == 0)
        m_first = m_lowest = m_highest = seen;
    if (point.y() < m_lowest.point.y())
        m_lowest = seen;
    if (point.y() > m_highest.point.y())
        m_highest = seen;
    m_last = seen;
    if (m_count == m_partLength)
        keepPart();
}

void PointSieve::interrupt()
{
    keepPart();
    m_isInside = false;
}

void PointSieve::keepPart()
{
    if (m_count == 0)
        return;
    Seen kept[] = {m_first, m_lowest, m_highest, m_last};
    if (m_lowest.number > m_highest.number)
        std::swap(kept[1], kept[2]);
    for (std::size_t i = 0; i < std::size(kept); ++i) {
        if (i == 0 || kept[i].number != kept[i - 1].number)
            m_pieces->back().append(kept[i].point);
    }
    m_count = 0;
}

bool isShown(double value, bool isLog)
{
    return std::isfinite(value) && (!isLog || value > 0.0);
}

void requireDrawable(const Variable& variable, const Coordinates& y, const std::optional<Coordinates>& x,
                     const Variable* axis)
{
    const std::string name = inQuotes(variable.GetName().toStdString());
    if (y.count() > s_mostValues)
        throw Failure(name + " has " + std::to_string(y.count()) + " values; at most " +
                      std::to_string(s_mostValues) + " can be drawn");
    if (x && x->count() != y.count())
        throw Failure(name + " has " + std::to_string(y.count()) + " values, but its axis " +
                      inQuotes(axis->GetName().toStdString()) + " has " + std::to_string(x->count()));
}

} // namespace

const Variable* firstAxisOf(const Variable& variable)
{
    if (variable.GetIndepCount() == 0)
        return nullptr;
    Variable* axis = nullptr;
    if (variable.GetIndepVariable(&axis, 0) < 0 || !axis)
        throw Failure("the axis of " + inQuotes(variable.GetName().toStdString()) + " leads nowhere");
    return axis;
}

Curve readCurve(const Variable& variable, const CurveOptions& options)
{
    const Variable* const axis = firstAxisOf(variable);
    Coordinates y(variable, options.yUnits);
    std::optional<Coordinates> x;
    if (axis)
        x.emplace(*axis, options.xUnits);
    requireDrawable(variable, y, x, axis);

    Curve curve;
    const std::uint64_t count = y.count();
    PointSieve sieve(std::max<std::uint64_t>(count / s_parts, 1), &curve.pieces);
    for (std::uint64_t begin = 0; begin < count; begin += s_blockLength) {
        const std::uint64_t end = std::min(begin + s_blockLength, count);
        const std::vector<double>& values = y.readMagnitudes(begin, end);
        const std::vector<double>* const places = x ? &x->readReal(begin, end) : nullptr;
        for (std::size_t i = 0; i < values.size(); ++i) {
            const double place = places ? (*places)[i] : static_cast<double>(begin + i);
            if (isShown(place, options.isLogX) && isShown(values[i], options.isLogY))
                sieve.add({place, values[i]});
            else
                sieve.interrupt();
        }
    }
    sieve.interrupt();
    curve.isMagnitude = y.isComplex();
    return curve;
}

} // namespace Orrery::Host
