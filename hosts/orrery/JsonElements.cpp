#include "hosts/orrery/JsonElements.h"

#include "foundations/variant/WellKnownType.h"
#include "hosts/orrery/JsonText.h"

namespace Orrery::Host {

using namespace Brindle::Quay;

JsonElements::JsonElements(const BVariant& array)
    : m_elements(array)
    , m_kind(Kind::Number)
{
    const WellKnownType type = array.getWellKnownType();
    if (type == WellKnownType::of<std::string>())
        m_kind = Kind::Text;
    else if (type == WellKnownType::of<bool>())
        m_kind = Kind::Bool;
    else if (type == WellKnownType::of<Duration>() || type == WellKnownType::of<TimePoint>())
        m_kind = Kind::Words;
    else if (m_elements.count() > 0 && m_elements.isComplex())
        m_kind = Kind::Complex;
}

void JsonElements::appendPart(std::string* out)
{
    appendJsonNumber(out, std::string_view(m_text));
    m_text.clear();
}

void JsonElements::write(JsonWriter& json, std::uint64_t position)
{
    std::string& out = json.value();
    m_text.clear();
    if (m_kind == Kind::Complex) {
        out += '[';
        m_elements.appendReal(&m_text, position);
        appendPart(&out);
        out += ", ";
        m_elements.appendImaginary(&m_text, position);
        appendPart(&out);
        out += ']';
    } else {
        m_elements.append(&m_text, position);
        if (m_kind == Kind::Number)
            appendPart(&out);
        else if (m_kind == Kind::Bool)
            out += m_text;
        else
            appendJsonBytes(&out, m_text);
    }
    json.written();
}

void JsonElements::writeLevel(JsonWriter& json, const std::vector<std::uint64_t>& dimensions,
                              std::size_t level, std::uint64_t* position)
{
    if (level == dimensions.size()) {
        write(json, (*position)++);
        return;
    }
    json.openInline('[');
    for (std::uint64_t i = 0; i < dimensions[level]; ++i)
        writeLevel(json, dimensions, level + 1, position);
    json.close();
}

void JsonElements::writeItems(JsonWriter& json, const std::vector<std::uint64_t>& dimensions)
{
    std::uint64_t position = 0;
    for (std::uint64_t i = 0; !dimensions.empty() && i < dimensions.front(); ++i)
        writeLevel(json, dimensions, 1, &position);
}

void writeShape(JsonWriter& json, const std::vector<std::uint64_t>& dimensions)
{
    json.openInline('[');
    for (const std::uint64_t size : dimensions)
        json.integer(size);
    json.close();
}

void writeUnitNumbers(JsonWriter& json, const Units& units)
{
    json.key("scale");
    json.number(units.GetScale());
    json.key("offset");
    json.number(units.GetOffset());
    json.key("log_scale");
    if (units.IsLogarithmic())
        json.number(units.GetLogScale());
    else
        json.null();
}

void writeUnits(JsonWriter& json, const std::optional<Units>& units)
{
    if (!units) {
        json.null();
        return;
    }
    const UnitType& type = units->GetUnitType();
    json.openInline('{');
    json.key("label");
    json.string(units->GetUnitsLabel());
    json.key("si");
    json.string(units->GetSIUnits());
    json.key("type");
    json.string(type.GetName());
    json.key("base");
    json.string(type.GetReferenceSIString());
    json.key("dimensions");
    json.string(type.GetDimensions().SIUnitsString());
    writeUnitNumbers(json, *units);
    json.close();
}

} // namespace Orrery::Host
