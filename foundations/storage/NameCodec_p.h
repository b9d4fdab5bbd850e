#pragma once

#include <QByteArray>
#include <QString>

namespace Orrery {

/// The text as UTF-8, in which a lone surrogate takes three bytes like any other code unit of its range: no
/// QString is lost, and what isn't a lone surrogate is plain UTF-8.
QByteArray EncodeText(const QString& text);

/// The reverse of EncodeText. False for bytes that EncodeText can't have made; `*text` is then untouched.
bool DecodeText(const QByteArray& bytes, QString* text);

/// The name of an HDF5 link for a property's name: distinct for distinct names, and the name itself wherever
/// HDF5 takes it as it is.
///
/// Percent-encoded are "%", "/", NUL, a leading ".", and bytes of lone surrogates; the empty name is "%". A name
/// too long for a link keeps its beginning, and "%#" and a hash of the whole stand for the rest. With
/// `besideCatalogue`, the name stands in the root group, where the catalogue's own names are taken.
QByteArray LinkName(const QString& name, bool besideCatalogue);

} // namespace Orrery
