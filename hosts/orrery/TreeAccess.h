#pragma once

#include "foundations/property/AbstractProperty.h"
#include "foundations/property/PropertyObject.h"
#include "foundations/storage/DataFile.h"
#include "variables/Variable.h"

#include <QString>

#include <memory>
#include <string>

namespace Orrery::Host {

/// Open a data file for reading.
///
/// Errors: Failure with the library's own line.
std::shared_ptr<DataFile> openForReading(const std::string& path);

/// The node at `path`, with or without the leading "/"; an empty path or "/" is the root itself. A reference leads
/// to its target.
///
/// Errors: Failure "FILE: PATH: ..." when nothing is there, or when a reference leads nowhere.
AbstractProperty* findNode(DataFile& file, const std::string& fileName, const std::string& path);

/// Put a node into a folder, which owns it from then on.
///
/// Errors: Failure when the tree refuses it; the node is gone then.
void insertNode(PropertyObject* folder, std::unique_ptr<AbstractProperty> node);

/// Whether a variable's values are stored, so that asking for them costs nothing before they are looked at.
bool holdsStoredData(const Variable& variable);

/// One line for a Failure: "FILE: WHY", whether `why` names the file itself or not.
std::string fileLine(const std::string& fileName, const QString& why);

/// A name as it is written in a path, and safe to print: what can't stand there is percent-encoded.
std::string pathName(const QString& name);

} // namespace Orrery::Host
