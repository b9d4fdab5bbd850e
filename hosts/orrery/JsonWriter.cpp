#include "hosts/orrery/JsonWriter.h"

#include "hosts/orrery/JsonText.h"

#include <string>

namespace Orrery::Host {

void JsonWriter::beginLine()
{
    m_out.buffer() += '\n';
    m_out.buffer().append(2 * m_levels.size(), ' ');
}

void JsonWriter::beginItem()
{
    if (m_isBehindKey || m_levels.empty()) {
        m_isBehindKey = false;
        return;
    }
    Level& level = m_levels.back();
    if (!level.isEmpty)
        m_out.buffer() += level.hasLines ? "," : ", ";
    level.isEmpty = false;
    if (level.hasLines)
        beginLine();
}

void JsonWriter::open(char bracket, bool hasLines)
{
    beginItem();
    m_out.buffer() += bracket;
    const bool isInline = !m_levels.empty() && !m_levels.back().hasLines;
    m_levels.push_back({bracket == '{' ? '}' : ']', hasLines && !isInline, true});
}

void JsonWriter::close()
{
    const Level level = m_levels.back();
    m_levels.pop_back();
    if (level.hasLines && !level.isEmpty)
        beginLine();
    m_out.buffer() += level.closing;
    if (m_levels.empty())
        m_out.buffer() += '\n';
    written();
}

void JsonWriter::key(std::string_view name)
{
    beginItem();
    appendJsonString(&m_out.buffer(), name);
    m_out.buffer() += ": ";
    m_isBehindKey = true;
}

std::string& JsonWriter::value()
{
    beginItem();
    return m_out.buffer();
}

void JsonWriter::string(std::string_view text)
{
    appendJsonString(&value(), text);
    written();
}

void JsonWriter::string(const QString& text)
{
    appendJsonString(&value(), text);
    written();
}

void JsonWriter::integer(std::uint64_t number)
{
    value() += std::to_string(number);
    written();
}

void JsonWriter::number(double number)
{
    appendJsonNumber(&value(), number);
    written();
}

void JsonWriter::boolean(bool value)
{
    this->value() += value ? "true" : "false";
    written();
}

void JsonWriter::null()
{
    value() += "null";
    written();
}

} // namespace Orrery::Host
