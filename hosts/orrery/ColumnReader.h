#pragma once

#include "hosts/orrery/Offsets.h"
#include "hosts/orrery/ValuePrinter.h"
#include "units/Units.h"
#include "variables/Variable.h"

#include <QString>

#include <cstdint>
#include <optional>
#include <string>

namespace Orrery::Host {

/// The values of one variable, read block by block in one unit.
class ColumnReader
{
public:
    /// The variable must outlive the reader.
    explicit ColumnReader(const Variable& variable);

    /// Errors: Failure for a variable without units, and for units of another kind.
    void convertTo(const Units& target);

    /// Convert to the display units of the variable, if it has any.
    void preferDisplayUnits(const Variable& variable);

    /// Show complex values as real ones if all of them are, as a frequency of a complex plot is.
    void preferReal();

    const QString& path() const { return m_path; }
    const OffsetReader& reader() const { return m_reader; }

    /// The units of what is read; none if the variable has none.
    const std::optional<Units>& units() const { return m_target ? m_target : m_units; }

    /// How many offsets are a block, of which a few fit into memory.
    std::uint64_t blockLength() const;

    ValueColumn read(std::uint64_t begin, std::uint64_t end);
    ValueColumn readOne(std::uint64_t offset);

private:
    ValueColumn prepared(Selection values);
    void keepParts(BVariant* data);

    std::string m_name;
    QString m_path;
    OffsetReader m_reader;
    std::optional<Units> m_units;
    std::optional<Units> m_target;
    bool m_isShownAsReal = false;
    std::optional<bool> m_isComplex; // of the first block; a table has either one column for it or two
};

} // namespace Orrery::Host
