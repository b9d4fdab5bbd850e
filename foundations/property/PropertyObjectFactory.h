#pragma once

#include "foundations/property/ErrorResult.h"
#include "orrerycore_export.h"

#include <QHash>
#include <QString>

#include <shared_mutex>

namespace Orrery {

class PropertyObject;

/// Makes the folders of a tree that is loaded, by the type names that were saved with them.
///
/// The one of the process is made when it is first asked for, also by a load-time initialiser of another
/// library, and lives until the process ends.
///
/// Threads: all operations may be called from any thread.
class ORRERYCORE_EXPORT PropertyObjectFactory
{
public:
    /// Makes a new object, which the caller owns. It runs whenever a file with such a folder is loaded.
    using Creator = PropertyObject* (*)();

    static PropertyObjectFactory& Instance(); ///< the one of the process, valid to its end

    PropertyObjectFactory(const PropertyObjectFactory&) = delete;
    PropertyObjectFactory& operator=(const PropertyObjectFactory&) = delete;

    /// Make a type known. "PropertyObject" is known from the start.
    ///
    /// Errors: ER_INVALID_ARGUMENT for an empty name or a null creator; ER_ALREADY_EXISTS for a known name,
    ///         whose first creator stays.
    ERESULT RegisterType(QString typeName, Creator creator);

    bool IsRegistered(const QString& typeName) const; ///< whether Create() knows the name

    /// A new object of that type, owned by the caller; null for an unknown name.
    PropertyObject* Create(const QString& typeName) const;

    /// As Create, but an unknown name gives a plain folder that keeps the name: its PropertyObjType() and that
    /// of its clones is `typeName`, so that a tree passes unharmed through a process that doesn't know the
    /// type. Never null; also a creator that makes nothing gives such a folder.
    PropertyObject* CreateOrKeepType(const QString& typeName) const;

private:
    PropertyObjectFactory();
    ~PropertyObjectFactory();

    mutable std::shared_mutex m_mutex;
    QHash<QString, Creator> m_creators;
};

} // namespace Orrery
