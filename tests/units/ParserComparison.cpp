#include "tests/units/ParserComparison.h"

#include "tests/units/SIStringTexts.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <sstream>

namespace Orrery::UnitsTest {

namespace {

/// The same bits, so that -0 isn't 0; the payload of a NaN is nobody's business.
bool sameBits(double a, double b)
{
    if (std::isnan(a) || std::isnan(b))
        return std::isnan(a) && std::isnan(b);
    return std::memcmp(&a, &b, sizeof a) == 0;
}

void compareNumber(std::ostream& out, const char* what, double found, double expected)
{
    if (!sameBits(found, expected)) {
        out.precision(17);
        out << what << " is " << found << ", expected " << expected << "; ";
    }
}

void compareText(std::ostream& out, const char* what, const QString& found, const QString& expected)
{
    if (found != expected)
        out << what << " is '" << shown(found) << "', expected '" << shown(expected) << "'; ";
}

bool hasLineBreak(const QString& text)
{
    static const QString breaks = QStringLiteral("\n\v\f\r") + QChar(0x0085) + QChar(QChar::LineSeparator) +
                                  QChar(QChar::ParagraphSeparator);
    for (const QChar unit : text) {
        if (breaks.contains(unit))
            return true;
    }
    return false;
}

} // namespace

TypeModel::Type TypeModel::find(const Exponents& exponents, const QString& text)
{
    std::vector<Type>& candidates = m_types[exponents];
    if (candidates.empty()) {
        for (const UnitType& type : UnitType::FindCompatibleTypes(toDimensions(exponents)))
            candidates.push_back({type.GetName(), type.GetReferenceSIString()});
    }
    if (candidates.empty())
        candidates.push_back({text, toDimensions(exponents).SIUnitsString()});
    for (const Type& type : candidates) {
        if (candidates.size() > 1 && text.contains(type.reference))
            return type;
    }
    return candidates.front();
}

std::string differenceFromPlain(const QString& text, TypeModel* types)
{
    const PlainResult expected = parsePlainly(text);
    TypeModel::Type type{UnitType::force.GetName(), UnitType::force.GetReferenceSIString()};
    Dimensions dimensions = UnitType::force.GetDimensions();
    if (expected.accepted) {
        type = types->find(expected.exponents, text);
        dimensions = toDimensions(expected.exponents);
    }

    Units::Impl found;
    found.valid = !expected.accepted; // which the parser leaves alone
    found.type = UnitType::force;
    found.scale = 7.0;
    found.offset = 5.0;
    found.logScale = 3.0;
    const bool accepted = found.ParseSIString(text);

    std::ostringstream out;
    if (accepted != expected.accepted)
        out << (accepted ? "accepted; " : "refused; ");
    if (found.valid == expected.accepted)
        out << "valid has changed; ";
    if (found.type.GetDimensions() != dimensions) {
        out << "dimensions are " << found.type.GetDimensions().SIUnitsString().toStdString() << ", expected "
            << dimensions.SIUnitsString().toStdString() << "; ";
    }
    compareText(out, "the type's name", found.type.GetName(), type.name);
    compareText(out, "the reference string", found.type.GetReferenceSIString(), type.reference);
    compareNumber(out, "scale", found.scale, expected.scale);
    compareNumber(out, "offset", found.offset, 0.0);
    compareNumber(out, "logScale", found.logScale, expected.logScale);
    return out.str();
}

std::string faultOfDiagnosis(const QString& text, bool accepted)
{
    const SIStringDiagnosis diagnosis = Units::DiagnoseSIString(text);
    if (diagnosis.valid != accepted)
        return accepted ? "a good text is called bad" : "a bad text is called good";
    if (accepted) {
        const bool quiet = diagnosis.found.isEmpty() && diagnosis.expected.isEmpty() &&
                           diagnosis.suggestions.isEmpty() && diagnosis.message().isEmpty();
        return quiet ? "" : "a good text is commented on";
    }
    if (diagnosis.position < 0 || diagnosis.position > text.size())
        return "the position lies outside the text";
    if (diagnosis.position == text.size() && !diagnosis.found.isEmpty())
        return "something is found behind the end";
    const QString message = diagnosis.message();
    if (message.isEmpty() || hasLineBreak(message))
        return "the message isn't one line";
    return "";
}

} // namespace Orrery::UnitsTest
