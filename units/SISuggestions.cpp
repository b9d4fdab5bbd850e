#include "units/SISuggestions_p.h"

#include "units/SIStringParser_p.h"
#include "units/SISymbols_p.h"
#include "units/SystemOfUnits.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <tuple>
#include <vector>

namespace Orrery::Internal {

/// The names of the catalogue without a copy of their units.
struct CatalogueAccess
{
    static const QMap<QString, Units>& rows() { return SystemOfUnits::instance().m_units; }
};

namespace {

constexpr int s_longestWord = 12;
constexpr int s_mostSuggestions = 3;

// What makes two texts differ: twice the number of letters to insert, drop or change, but a letter of the other case
// counts once.
int distanceOf(const QString& a, const QString& b)
{
    std::array<int, s_longestWord + 2> row{};
    for (int j = 0; j <= b.size(); ++j)
        row[static_cast<std::size_t>(j)] = 2 * j;
    for (int i = 0; i < a.size(); ++i) {
        int diagonal = row[0];
        row[0] = 2 * (i + 1);
        for (int j = 0; j < b.size(); ++j) {
            const auto at = static_cast<std::size_t>(j);
            int change = 2;
            if (a[i].toCaseFolded() == b[j].toCaseFolded())
                change = a[i] == b[j] ? 0 : 1;
            const int replaced = diagonal + change;
            diagonal = row[at + 1];
            row[at + 1] = std::min({replaced, row[at] + 2, diagonal + 2});
        }
    }
    return row[static_cast<std::size_t>(b.size())];
}

class Ranking
{
public:
    explicit Ranking(const QString& word)
        : m_word(word)
        , m_farthest(word.size() <= 4 ? 2 : 4)
        , m_isPrefix(isPrefixSymbol(word))
    {
    }

    // Whether a text of that length can be near at all.
    bool mayBeNear(int length) const
    {
        return std::abs(length - m_word.size()) * 2 <= m_farthest && length <= s_longestWord;
    }

    // `rarity` orders texts of the same distance.
    void consider(const QString& text, int rarity)
    {
        if (!mayBeNear(text.size()))
            return;
        const int distance = distanceOf(m_word, text);
        const bool goesOn = text.startsWith(m_word);
        const bool isNear = distance <= m_farthest && distance < m_word.size(); // "x" is near to nothing
        const bool completes = distance <= m_farthest && goesOn && (rarity == 0 || m_word.size() > 1);
        const bool isSameLetters = !m_isPrefix && text.compare(m_word, Qt::CaseInsensitive) == 0;
        if (isNear || completes || isSameLetters)
            m_entries.emplace_back(distance, goesOn ? 0 : 1, rarity, text);
    }

    QStringList best()
    {
        std::sort(m_entries.begin(), m_entries.end());
        QStringList texts;
        for (const Entry& entry : m_entries) {
            if (texts.size() < s_mostSuggestions && !texts.contains(std::get<QString>(entry)))
                texts.append(std::get<QString>(entry));
        }
        return texts;
    }

private:
    using Entry = std::tuple<int, int, int, QString>; // distance, whether it is no completion, rarity, text

    QString m_word;
    int m_farthest;
    bool m_isPrefix;
    std::vector<Entry> m_entries;
};

void considerSymbols(Ranking* ranking)
{
    const SISymbolTable& table = SISymbolTable::s_instance;
    QString text; // one for all: there are hundreds
    for (const SiUnitRow& unit : table.units()) {
        const QStringView symbol(unit.symbol);
        const auto consider = [&](QStringView prefix, int rarity) {
            if (!ranking->mayBeNear(static_cast<int>(prefix.size() + symbol.size())))
                return;
            text.resize(0);
            text.append(prefix.data(), static_cast<int>(prefix.size()));
            text.append(symbol.data(), static_cast<int>(symbol.size()));
            ranking->consider(text, rarity);
        };
        consider(QStringView(), 0);
        for (const SiPrefixRow& prefix : table.prefixes())
            consider(QStringView(prefix.symbol), 1 + std::abs(prefix.exponent));
    }
}

void considerNames(Ranking* ranking)
{
    const QMap<QString, Units>& rows = CatalogueAccess::rows();
    for (auto row = rows.constBegin(); row != rows.constEnd(); ++row)
        ranking->consider(row.key(), 1);
}

} // namespace

bool isSIString(const QString& text)
{
    if (text.isEmpty())
        return true;
    int start = 0;
    const SIStringForm form = formOf(text, &start);
    SIQuotientReader reader(text, start);
    return reader.run() && endsWell(form, text, reader.position());
}

bool isPrefixSymbol(const QString& text)
{
    const SISymbolTable::Prefixes& prefixes = SISymbolTable::s_instance.prefixes();
    return std::any_of(prefixes.begin(), prefixes.end(), [&text](const SiPrefixRow& prefix) {
        return text == QString::fromUtf16(prefix.symbol);
    });
}

QString repairedSymbols(QString text)
{
    struct Repair
    {
        const char16_t* typed;
        const char16_t* meant;
    };
    static constexpr Repair repairs[] = {
        {u"Ohms", u"\u03A9"},      {u"ohms", u"\u03A9"},      {u"Ohm", u"\u03A9"},
        {u"ohm", u"\u03A9"},       {u"\u2126", u"\u03A9"},                               // the ohm sign
        {u"u", u"\u00B5"},         {u"\u03BC", u"\u00B5"},                               // Greek mu
        {u"\u00B7", u"*"},         {u"\u22C5", u"*"},         {u"\u00D7", u"*"},         // dots and a cross
        {u"\u207B\u00B9", u"^-1"}, {u"\u207B\u00B2", u"^-2"}, {u"\u207B\u00B3", u"^-3"}, // raised digits
        {u"\u00B2", u"^2"},        {u"\u00B3", u"^3"},        {u"**", u"^"},
    };
    for (const Repair& repair : repairs)
        text.replace(QString::fromUtf16(repair.typed), QString::fromUtf16(repair.meant));
    return text;
}

QString symbolOfWords(const QString& word)
{
    struct Spelling
    {
        const char* word;
        const char16_t* symbol;
    };
    static constexpr Spelling prefixes[] = {
        {"giga", u"G"},  {"mega", u"M"},       {"kilo", u"k"}, {"centi", u"c"},
        {"milli", u"m"}, {"micro", u"\u00B5"}, {"nano", u"n"}, {"pico", u"p"},
    };
    static constexpr Spelling units[] = {
        {"meter", u"m"},   {"metre", u"m"},      {"gram", u"g"},    {"second", u"s"},     {"sec", u"s"},
        {"amp", u"A"},     {"ampere", u"A"},     {"kelvin", u"K"},  {"mole", u"mol"},     {"candela", u"cd"},
        {"hertz", u"Hz"},  {"newton", u"N"},     {"pascal", u"Pa"}, {"joule", u"J"},      {"watt", u"W"},
        {"coulomb", u"C"}, {"volt", u"V"},       {"farad", u"F"},   {"siemens", u"S"},    {"tesla", u"T"},
        {"henry", u"H"},   {"liter", u"L"},      {"litre", u"L"},   {"radian", u"rad"},   {"degree", u"deg"},
        {"weber", u"Wb"},  {"steradian", u"sr"}, {"lumen", u"lm"},  {"becquerel", u"Bq"}, {"gray", u"Gy"},
    };
    QString rest = word.size() > 24 ? QString() : word.toCaseFolded();
    QString symbol;
    for (const Spelling& prefix : prefixes) {
        if (rest.startsWith(QLatin1String(prefix.word))) {
            symbol = QString::fromUtf16(prefix.symbol);
            rest.remove(0, QLatin1String(prefix.word).size());
            break;
        }
    }
    for (const Spelling& unit : units) {
        const QLatin1String singular(unit.word);
        if (rest == singular || rest == singular + QLatin1Char('s'))
            return symbol + QString::fromUtf16(unit.symbol);
    }
    return QString();
}

QStringList similarSymbols(const QString& word, bool withNames)
{
    const QString spelled = symbolOfWords(word);
    if (!spelled.isEmpty())
        return {spelled};
    if (word.isEmpty() || word.size() > s_longestWord)
        return {};
    Ranking ranking(word);
    considerSymbols(&ranking);
    if (withNames)
        considerNames(&ranking);
    return ranking.best();
}

} // namespace Orrery::Internal
