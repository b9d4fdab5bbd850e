#pragma once

#include "foundations/property/PropertyObject.h"
#include "foundations/property/PropertyReference.h"
#include "orrerycorevariables_export.h"

#include <QString>

#include <memory>

namespace Orrery {

struct DataObserver;
class Variable;

/// A reference that can stand for a Variable before the two have a place in one tree.
///
/// With an observer it stands for the Variable object that the observer follows, wherever that is, and works
/// out the path each time it is asked: relative in one tree, absolute with the path and type of the file
/// towards a file. Where neither is the case, the path is what a plain reference knows, and a debug line
/// tells. A Variable that was destroyed counts as none. Without an observer it is a plain reference, as which
/// it is also saved.
///
/// Edge:   for reading through ResolveConst() an observer isn't asked: it gives null for a reference that was
///         never bound otherwise.
class ORRERYCOREVARIABLES_EXPORT ObservablePropertyReference : public PropertyReference
{
public:
    explicit ObservablePropertyReference(const QString& name); ///< stands for nothing yet

    /// Copies and clones share the observer.
    ObservablePropertyReference(const ObservablePropertyReference& other);
    ObservablePropertyReference& operator=(const ObservablePropertyReference& other); ///< shares the observer

    ~ObservablePropertyReference() override;
    AbstractProperty* DoClone() const override;

protected:
    AbstractProperty* GetPropertyRef() const override;

public:
    QString ReferencePath() const override;
    QString ReferenceFilePath() const override;
    QString ReferenceFileType() const override;

protected:
    AbstractProperty* ResolveExternalRef() const override;

public:
    /// Stand for the Variable of this observer; an empty one makes this a plain reference again.
    void setObserver(std::shared_ptr<DataObserver> observer);

private:
    /// Where the Variable stands, seen from here.
    enum class Place
    {
        SameTree,
        DataFile,
        Unknown
    };

    Place placeOf(const Variable* variable) const;

    std::shared_ptr<DataObserver> m_observer;
};

/// Put a reference to a Variable into a folder, under a name: bound where the folder can refer to the Variable
/// now, through the observer of the Variable where it can't.
///
/// Errors: ER_INVALID_ARGUMENT for a null `target`; what PropertyObject::InsertProperty or
///         PropertyReference::SetPropertyRef says else. The folder is then as it was.
ORRERYCOREVARIABLES_EXPORT ERESULT insertVariableReference(PropertyObject& holder, const QString& name,
                                                           Variable* target);

} // namespace Orrery
