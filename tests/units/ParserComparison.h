#pragma once

#include "tests/units/PlainParser.h"
#include "units/Units.h"

#include <QString>

#include <map>
#include <string>
#include <vector>

namespace Orrery::UnitsTest {

/// Says which type a unit gets, from the rule alone: of several types of these dimensions the first whose reference
/// string occurs in the text, else the first; without any, a new one that has the text for a name.
///
/// Edge: types that were registered before this saw their dimensions are learnt from the registry.
class TypeModel
{
public:
    struct Type
    {
        QString name;
        QString reference;
    };

    Type find(const Exponents& exponents, const QString& text);

private:
    std::map<Exponents, std::vector<Type>> m_types;
};

/// Compares the parser with the plain one, in all that a parse leaves behind, and the diagnosis with its verdict.
///
/// Returns what differs, in words; empty when nothing does.
std::string differenceFromPlain(const QString& text, TypeModel* types);

/// What is wrong with the diagnosis of a text that the parser accepts or refuses; empty when nothing is.
std::string faultOfDiagnosis(const QString& text, bool accepted);

} // namespace Orrery::UnitsTest
