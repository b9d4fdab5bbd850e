#pragma once

#include "foundations/property/Metadata.h"
#include "foundations/property/PropertyObject.h"
#include "orrerycorevariables_export.h"

#include <QList>
#include <QString>

namespace Orrery {

class ResultData;

/// The top folder of one stored result: names the application that has made it, holds the folders of data, and can
/// keep the setup that has led to them and the template with which to show them. All of that is children.
class ORRERYCOREVARIABLES_EXPORT Result : public PropertyObject
{
public:
    /// An unnamed result of the application "Unknown".
    Result();

    /// Edge:   a result whose application can't be stored isn't serializable.
    Result(const QString& name, const QString& applicationId);
    Result(const Result& other);            ///< with clones of the children; no parent
    Result& operator=(const Result& other); ///< as the assignment of a PropertyObject

    const QString& PropertyObjType() const override;
    ~Result() override;
    AbstractProperty* DoClone() const override;

    /// The folder of data of that name, owned by this result; null for none and for a child of another kind.
    ResultData* GetResultData(const QString& name);
    const ResultData* GetResultData(const QString& name) const; ///< null without one

    /// Append the folders of data to the list, in the order of their names. References to such aren't.
    ///
    /// Errors: ER_INVALID_ARGUMENT for a null list.
    ERESULT GetResultDataList(QList<ResultData*>* list);
    ERESULT GetResultDataList(QList<const ResultData*>* list) const; ///< appends, as the other
    QList<ResultData*> GetResultDataList(); ///< the folders of data alone, in a new list

    /// The folder for what has led to the result, made when it is missing and owned by it.
    ///
    /// Errors: null if a child of another kind has the name, which is kept.
    PropertyObject* GetOrCreateSetupInfoFolder();

    /// Whether there is such a folder with something in it.
    bool HasSetupInformation() const;

    /// The template with which to show the result, owned by it; null without one.
    const Metadata* GetDefaultDisplayTemplate() const;

    /// Take over a template, which is renamed, in place of whatever has its name.
    ///
    /// Errors: ER_INVALID_ARGUMENT for null, else what PropertyObject::InsertOrReplaceProperty says; the
    ///         template, with its new name, stays the caller's then.
    ERESULT SetDefaultDisplayTemplate(Metadata* metadata);

    /// "Result", the name under which the class is saved.
    static const QString& StaticType();

    static QString ApplicationID();          ///< "AppID"
    static QString Setup();                  ///< "Setup"
    static QString DefaultDisplayTemplate(); ///< "DisplayTemplate"

private:
    PropertyObject* GetSetupObjectPtr() const;

    static const QString s_applicationId;
    static const QString s_setup;
    static const QString s_displayTemplate;
};

extern template ORRERYCOREVARIABLES_EXPORT Result* PropertyObject::GetPtr<Result>(const QString& name);

} // namespace Orrery
