#pragma once

#include "orrerycore_export.h"

#include <QString>
#include <QStringList>

namespace Orrery {

class AbstractProperty;

/// Paths in a tree, as text.
///
/// A full path lists the names from the root's child downward with "/" before each; "/" is the root. A relative
/// path runs from node to node: ".." is the folder above, "." the node itself. A name in a path is encoded where
/// it has to be: "/" is "%2F", "%" is "%25", the names "." and ".." are "%2E" and "%2E%2E", the empty name is
/// "%". Everything else, NUL and lone surrogates included, stands for itself.
///
/// All operations take any text: empty steps are passed over ("//a/" is "/a"), "%" with two hex digits stands
/// for that character and any other "%" for itself, except that a step of "%" alone is the empty name.
namespace Property {

/// One name as a step of a path, and back. DecodeName(EncodeName(name)) is the name.
ORRERYCORE_EXPORT QString EncodeName(const QString& name);
ORRERYCORE_EXPORT QString DecodeName(const QString& step); ///< the name that the step stands for

/// The full path of the node with these names from the root's child downward.
ORRERYCORE_EXPORT QString BuildPath(const QStringList& names);

/// The names of a full path, steps "." and ".." worked in; ".." at the root stays there.
ORRERYCORE_EXPORT QStringList SplitPath(const QString& path);

/// The path that leads from the first full path to the second.
ORRERYCORE_EXPORT QString GetRelativePath(const QString& fromPath, const QString& toPath);

/// The full path at which one arrives from a full path by a relative or full path; empty for an empty `path`
/// and for one that leads out of the tree.
ORRERYCORE_EXPORT QString ResolvePath(const QString& fromPath, const QString& path);

/// The node at which one arrives from a node by a relative path, or by a full path from the root of its tree;
/// null for a null node, an empty path, and when there is none. References on the way are not followed.
ORRERYCORE_EXPORT AbstractProperty* FindProperty(const AbstractProperty* from, const QString& path);

} // namespace Property
} // namespace Orrery
