#pragma once

#include "variables/FunctionVarStrategy.h"
#include "variables/Variable.h"

namespace Orrery {

/// A Variable whose data are the result of a measurement: computed when they are read, and again only when an
/// argument or the Function has changed. FunctionVarStrategy tells how.
///
/// It adds a type name and short ways to its strategy. Where a host has given it a strategy of another kind, these
/// work on its children all the same.
/// Edge:   clones, and what New() makes, are plain Variables with the same strategy.
class ORRERYCOREVARIABLES_EXPORT FunctionVar : public Variable
{
public:
    FunctionVar();                             ///< unnamed and dirty, without arguments and Function
    explicit FunctionVar(const QString& name); ///< dirty, without arguments and Function

    /// As the copy of a Variable. The copy is dirty, and bound to nothing until FunctionVarStrategy::Relink().
    FunctionVar(const FunctionVar& other);
    FunctionVar& operator=(const FunctionVar& other); ///< dirty, and bound to nothing, as a copy

    const QString& PropertyObjType() const override;
    ~FunctionVar() override;

    /// A plain Variable with the function strategy and clones of the children.
    AbstractProperty* DoClone() const override;

    /// A new plain Variable with the function strategy, owned by the caller.
    static Variable* New(QString name);

    /// See FunctionVarStrategy, for each of these.
    ERESULT AddArgumentRef(const Variable* argument);
    void DeleteArguments();                                     ///< the result stays as it is
    ERESULT GetArguments(QList<AbstractProperty*>* list) const; ///< the references, not what they refer to
    ERESULT SetFunction(Function* function);                    ///< takes it over on success
    Function* GetFunction() const;                              ///< stays the variable's; null without one

    /// "FunctionVar", the name under which the class is saved.
    static const QString& StaticType();

protected:
    void Init(); ///< gives a new variable the function strategy
};

/// Relink() each function variable of a tree, the given folder included: what a host calls once after it has opened
/// a file or cloned a tree. Other data files that references of the same file haven't found are looked for anew.
///
/// Errors: the first failing code, after all have been done.
/// Cost:   one walk over the tree.
ORRERYCOREVARIABLES_EXPORT ERESULT RelinkFunctionVariables(PropertyObject& tree);

extern template ORRERYCOREVARIABLES_EXPORT FunctionVar*
PropertyObject::GetPtr<FunctionVar>(const QString& name);

} // namespace Orrery
