#include "units/Units.h"

#include "Core/FunctionProperty.h"
#include "foundations/property/PropertyHandle.h"
#include "foundations/variant/VariantOperations.h"
#include "units/SIStringParser_p.h"
#include "units/UnitsNames_p.h"

#include <ostream>
#include <utility>
#include <vector>

namespace Orrery {
namespace {

using Brindle::Quay::getScalar;
using Internal::SIQuotientReader;
using Internal::SIStringForm;

QString textOf(const PropertyObject& folder, const QString& name)
{
    QString text;
    folder.GetProperty(name, &text);
    return text;
}

// The text steers the choice among types of equal dimensions, and names a new type. It is no label.
Units baseUnits(const Dimensions& dimensions, const QString& text)
{
    const UnitType type = UnitType::FindUnitType(dimensions, text);
    return Units(type, type.GetReferenceSIString(), 1.0, 0.0, 0.0);
}

} // namespace

bool Units::Impl::ParseSIString(const QString& text)
{
    scale = 1.0;
    offset = 0.0;
    logScale = 0.0;
    if (text.isEmpty()) {
        type = UnitType::dimensionless;
        return true;
    }
    int start = 0;
    const SIStringForm form = Internal::formOf(text, &start);
    SIQuotientReader reader(text, start);
    const bool isQuotient = reader.run();
    scale = reader.scale();
    if (!isQuotient || !Internal::endsWell(form, text, reader.position()))
        return false;
    type = UnitType::TypeFor(reader.dimensions(), text);
    logScale = Internal::logScaleOf(form, type);
    return true;
}

Units::Units()
    : m_impl(std::make_unique<Impl>())
{
}

Units::Units(const UnitType& type, const QString& label, double scale, double offset, double logScale)
    : m_impl(std::make_unique<Impl>())
{
    m_impl->type = type;
    m_impl->scale = scale;
    m_impl->offset = offset;
    m_impl->logScale = logScale;
    SetProperty(SIUnits, type.GetReferenceSIString());
    SetProperty(DisplayUnit, label);
    KeepNumbers();
    m_impl->valid = true;
}

Units::Units(const QString& siString)
    : m_impl(std::make_unique<Impl>())
{
    SetSIUnits(siString);
}

Units::Units(const Units& other, std::unique_ptr<Impl> numbers)
    : PropertyObject(other)
    , m_impl(std::move(numbers))
{
    SetPropertyFlags(PropertyFlagSerializable); // a unit takes over no flags
}

Units::Units(const Units& other)
    : Units(other, std::make_unique<Impl>(*other.m_impl))
{
}

// The children are cloned, not moved: the source may stand in a tree, and its folder stays whole. That may throw.
// NOLINTNEXTLINE(performance-noexcept-move-constructor)
Units::Units(Units&& other)
    : Units(other, nullptr)
{
    m_impl.swap(other.m_impl);
}

Units& Units::operator=(const Units& other)
{
    if (this != &other)
        TakeOver(other, std::make_unique<Impl>(*other.m_impl));
    return *this;
}

// The source may stand below this unit, and goes with the former children then.
// NOLINTNEXTLINE(performance-noexcept-move-constructor)
Units& Units::operator=(Units&& other)
{
    if (this == &other)
        return *this;
    const PropertyHandle source(&other);
    std::unique_ptr<Impl> former =
        TakeOver(other, other.m_impl ? std::make_unique<Impl>(*other.m_impl) : nullptr);
    if (former && source.Get())
        other.m_impl = std::move(former);
    return *this;
}

/// Children of the other unit and these numbers; returns the former ones. After what throws all is as before, and
/// nothing happens to a unit that a handler of a former child's end has destroyed.
std::unique_ptr<Units::Impl> Units::TakeOver(const Units& other, std::unique_ptr<Impl> numbers)
{
    const PropertyHandle self(GetPropertyCount() > 0 ? this
                                                     : nullptr); // without children there is no such handler
    PropertyObject::operator=(other);
    return self.IsExpired() ? nullptr : std::exchange(m_impl, std::move(numbers));
}

Units::~Units() = default;

const QString& Units::StaticType()
{
    static const QString type = QStringLiteral("Units");
    return type;
}

const QString& Units::PropertyObjType() const
{
    return StaticType();
}

AbstractProperty* Units::DoClone() const
{
    return new Units(*this);
}

// Numbers first: a unit from explicit numbers has an SI string too, but that tells nothing of them.
void Units::OnDeserialization()
{
    if (!HasProperty(SIUnits) || RestoreNumbers())
        return;
    QString text;
    if (GetProperty(SIUnits, &text) >= 0)
        m_impl->valid = m_impl->ParseSIString(text);
}

// True if the numbers are the business of the child "Function", whether or not they are all there.
bool Units::RestoreNumbers()
{
    const auto* const function = dynamic_cast<const Function*>(GetPropertyConstPtr(ConversionFunction));
    if (!function)
        return false;
    const QString name = function->GetFunctionName();
    const bool isLogarithmic = name == Internal::s_logarithmicScaleName;
    if (!isLogarithmic && name != Internal::s_linearScaleName)
        return false;
    const std::vector<BVariant> parameters = function->GetParameters();
    const std::size_t first = isLogarithmic ? 1 : 0; // where scale and offset stand
    if (parameters.size() < first + 2)
        return true;
    m_impl->logScale = isLogarithmic ? getScalar<double>(parameters[0], 1) : 0.0;
    m_impl->scale = getScalar<double>(parameters[first], 1);
    m_impl->offset = getScalar<double>(parameters[first + 1], 1);
    m_impl->valid = true;
    return true;
}

void Units::KeepNumbers()
{
    const QString& name = IsLogarithmic() ? Internal::s_logarithmicScaleName : Internal::s_linearScaleName;
    std::vector<BVariant> parameters;
    if (IsLogarithmic())
        parameters.emplace_back(m_impl->logScale);
    parameters.emplace_back(m_impl->scale);
    parameters.emplace_back(m_impl->offset);
    auto function = std::make_unique<Function>(name);
    function->SetParameters(parameters);
    function->SetName(ConversionFunction);
    if (InsertOrReplaceProperty(function.get()) >= 0)
        static_cast<void>(function.release()); // this folder's now
}

Units Units::FromSIString(const QString& siString)
{
    return Units(siString);
}

QString Units::GetSIUnits() const
{
    return textOf(*this, SIUnits);
}

QString Units::GetUnitsLabel() const
{
    QString label = textOf(*this, DisplayUnit);
    if (!label.isEmpty() || Orrery::Dimensionless(*this))
        return label;
    return GetSIUnits();
}

bool Units::IsCommensurable(const Units& other) const
{
    return m_impl->type.GetDimensions() == other.m_impl->type.GetDimensions();
}

ERESULT Units::SetSIUnits(const QString& siString)
{
    m_impl->valid = m_impl->ParseSIString(siString);
    if (!m_impl->valid)
        return ER_INVALID_ARGUMENT;
    SetProperty(SIUnits, siString);
    return ER_SUCCESS;
}

Units& Units::SetUnitsLabel(const QString& label)
{
    SetProperty(DisplayUnit, label);
    return *this;
}

Units UnitType::GetBaseMKSUnits() const
{
    return Units(m_referenceSI);
}

bool Dimensionless(const Units& units)
{
    return units.GetUnitType() == UnitType::dimensionless;
}

bool operator==(const Units& a, const Units& b)
{
    return a.IsCommensurable(b) && a.GetOffset() == b.GetOffset() && a.GetScale() == b.GetScale() &&
           a.GetLogScale() == b.GetLogScale() && a.GetUnitsLabel() == b.GetUnitsLabel();
}

bool operator!=(const Units& a, const Units& b)
{
    return !(a == b);
}

Units operator*(const Units& a, const Units& b)
{
    const Dimensions dimensions = a.GetUnitType().GetDimensions() * b.GetUnitType().GetDimensions();
    return baseUnits(dimensions,
                     QLatin1Char('(') + a.GetUnitsLabel() + QLatin1String(")*") + b.GetUnitsLabel());
}

Units operator/(const Units& a, const Units& b)
{
    const Dimensions dimensions = a.GetUnitType().GetDimensions() / b.GetUnitType().GetDimensions();
    return baseUnits(dimensions,
                     a.GetUnitsLabel() + QLatin1String("/(") + b.GetUnitsLabel() + QLatin1Char(')'));
}

Units operator^(const Units& a, int n)
{
    const Dimensions dimensions = a.GetUnitType().GetDimensions() ^ n;
    return baseUnits(dimensions,
                     QLatin1Char('(') + a.GetUnitsLabel() + QLatin1String(")^") + QString::number(n));
}

std::ostream& operator<<(std::ostream& stream, const Units& units)
{
    return stream << units.GetName().toStdString() << ": SI units=" << units.GetSIUnits().toStdString()
                  << ", display label=" << units.GetUnitsLabel().toStdString()
                  << ", scale=" << units.GetScale() << std::endl;
}

} // namespace Orrery
