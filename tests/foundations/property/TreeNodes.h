#pragma once

#include "foundations/property/Metadata.h"
#include "foundations/property/Property.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <iosfwd>

/// GoogleTest shows a text as text; found by argument-dependent lookup, hence in the global namespace.
void PrintTo(const QString& text, std::ostream* out);

namespace Orrery::TreeTest {

/// How many nodes of one kind were made and destroyed; outlives the nodes that report to it.
struct LifeCount
{
    int made = 0;
    int destroyed = 0;

    int alive() const { return made - destroyed; }
};

/// A host's folder: counts its life and its path changes and lets a test act inside both.
///
/// A clone reports to the same count and has no handlers.
class HostFolder : public PropertyObject
{
public:
    using Handler = std::function<void(HostFolder&)>;

    explicit HostFolder(const QString& name, LifeCount* life = nullptr);
    ~HostFolder() override;

    AbstractProperty* DoClone() const override;

    int pathChanges = 0;
    Handler onPathChanged; ///< runs after the base class's operation
    Handler onDestroy;     ///< runs first of all in the destructor
    std::function<void()> onClone;

protected:
    void OnPathChanged() override;

private:
    LifeCount* m_life;
};

/// A host's leaf and a host's reference that count their lives.
class HostValue : public SimpleProperty
{
public:
    explicit HostValue(const QString& name, LifeCount* life);
    ~HostValue() override;

private:
    LifeCount* m_life;
};

class HostReference : public PropertyReference
{
public:
    explicit HostReference(const QString& name, LifeCount* life);
    ~HostReference() override;

private:
    LifeCount* m_life;
};

/// A folder with the type flags of a file's root, without a file.
class RootLikeFolder : public HostFolder
{
public:
    using HostFolder::HostFolder;
    unsigned int GetTypeFlags() const override;
};

/// A concrete Metadata.
class HostMetadata : public Metadata
{
public:
    explicit HostMetadata(const QString& name);
    AbstractProperty* DoClone() const override;
};

/// Insert a new folder; a failure is a test failure, and the folder is destroyed.
HostFolder* addFolder(PropertyObject& parent, const QString& name, LifeCount* life = nullptr);

/// Insert a leaf with a number.
SimpleProperty* addValue(PropertyObject& parent, const QString& name, double value = 0.0);

/// Insert a reference and bind it, in the order that the callers of the library use.
PropertyReference* addReference(PropertyObject& parent, const QString& name, const AbstractProperty& target);

/// The names of the children, in the order of the list.
QStringList namesOf(const QList<AbstractProperty*>& nodes);
QStringList childNames(const PropertyObject& folder);
QStringList numberedNames(const PropertyObject& folder, const QString& prefix = QString());

/// Names that are legal and awkward: everything that a path must encode, and what text handling stumbles over.
QStringList awkwardNames();

} // namespace Orrery::TreeTest
