#pragma once

#include "results/ResultData.h"

namespace Orrery {

/// A parameter sweep: refers to a parameter variable and to one ResultData for each of its values, which may stand
/// in other files.
///
/// Asked for a variable by name, it joins the variables of that name of all its members end to end, in a ConcatVar
/// that becomes a child when it is first asked for. The independents of the joined variable are the joined
/// independents of the members and, last, the parameter, stretched along the joined axis. They stand in a folder
/// beside it, named after it with "_Indeps" behind. Nothing of that is saved: it is built again after a reload.
///
/// Edge:   a joined variable is built once and never looked at again, whatever becomes of the members. Delete it to
///         have it built anew.
/// Edge:   a variable named like a child of the sweep ("0", "Parameter") deletes that child when it is asked for.
class ORRERYCOREVARIABLES_EXPORT ParameterizedResultData : public ResultData
{
public:
    /// "Parameter": the name of the reference to the parameter variable.
    static const QString ParameterVar;

    ParameterizedResultData();                             ///< unnamed, without parameter and members
    explicit ParameterizedResultData(const QString& name); ///< without parameter and members
    /// With clones of the children: references to the members; the members themselves aren't copied.
    ParameterizedResultData(const ParameterizedResultData& other);
    ParameterizedResultData& operator=(const ParameterizedResultData& other); ///< as a PropertyObject's

    const QString& PropertyObjType() const override;
    ~ParameterizedResultData() override;
    AbstractProperty* DoClone() const override;

    /// As FindOrCreateResultVar() if the first member has a variable of that name; else null. The const form builds
    /// the joined variable too.
    Variable* FindResultVar(const QString& name) override;
    const Variable* FindResultVar(const QString& name) const override;

    /// Append the joined variables of all names of GetVariableNameList(), which builds them.
    void GetVariableList(QList<AbstractProperty*>* list) override;

    /// Append the names of the variables of the first member, in the order of the children's names.
    void GetVariableNameList(QStringList* list) const override;

    /// Refer to the parameter: one value for each member.
    ///
    /// Errors: what PropertyObject::SetPropertyRef says; there is no parameter then.
    ERESULT SetParameterRef(const Variable* variable);

    /// Append a member.
    ///
    /// Errors: ER_INVALID_ARGUMENT for null and for a member that stands neither in this tree nor in a data file;
    ///         what the tree reports else. No member is added then.
    ERESULT AddResultDataRef(const ResultData* data);

    /// The variable of that name that joins those of the members, owned by this folder.
    ///
    /// Without a parameter it is an empty ConcatVar, and stays that. A member that isn't found, or lacks the
    /// variable, is passed over; members that are sweeps join theirs first. The units are those of the first member
    /// that has any.
    /// Errors: null if the folder can't take another child.
    /// Cost:   of the first request, linear in the members and their independents.
    Variable* FindOrCreateResultVar(const QString& name);

    /// "ParameterizedResultData", the name under which the class is saved.
    static const QString& StaticType();
};

extern template ORRERYCOREVARIABLES_EXPORT ParameterizedResultData*
PropertyObject::GetPtr<ParameterizedResultData>(const QString& name);

} // namespace Orrery
