#pragma once

#include <QString>
#include <QStringList>

namespace Orrery::Internal {

/// Whether the parser takes the text. Registers no type.
bool isSIString(const QString& text);

/// Whether the text is the symbol of a prefix.
bool isPrefixSymbol(const QString& text);

/// The text with what people type for "µ", "Ω", "*" and "^" replaced: "um" becomes "µm", "kohm" becomes "kΩ".
QString repairedSymbols(QString text);

/// "km" for "kilometer"; empty for what is no English name of a unit.
QString symbolOfWords(const QString& word);

/// Symbols that look like `word`, the nearest first, at most three; with `withNames` also names of the catalogue.
///
/// Cost:   some hundred comparisons of short texts; none for a word of more than 12 code units.
QStringList similarSymbols(const QString& word, bool withNames);

} // namespace Orrery::Internal
