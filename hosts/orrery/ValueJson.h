#pragma once

#include "hosts/orrery/JsonWriter.h"
#include "hosts/orrery/Offsets.h"

#include <QString>

#include <cstdint>
#include <string>

namespace Orrery::Host {

class ColumnReader;

/// What tells the values of a document apart from others.
struct JsonHead
{
    std::string file;
    QString path;
    QString type;
    std::string function; ///< that was asked for; may be empty
};

/// The values of one variable and of its axes as one JSON document, of which no more than a block is in memory.
///
/// Shape:  an object; docs/json.md tells its members. Calls: begin(), addAxis() for each axis, addValues(), end().
/// Errors: those of reading the values. What has been written by then is no whole document.
class ValueJson
{
public:
    explicit ValueJson(Output& out)
        : m_json(out)
    {
    }

    void begin(const JsonHead& head, const OffsetSpan& span, std::uint64_t offsets);
    void addAxis(ColumnReader& axis, const OffsetSpan& span);
    void addValues(ColumnReader& values, const OffsetSpan& span);
    void end();

private:
    void addColumn(ColumnReader& column, const OffsetSpan& span);

    JsonWriter m_json;
};

} // namespace Orrery::Host
