#pragma once

#include "variables/IVariableStrategy.h"

namespace Orrery {

/// The values of a sweep's parameter, stretched along the concatenation of the results: at each offset stands
/// the parameter's value of the member that the offset lies in.
///
/// The child "Param" is the parameter, the child "DependVar" the concatenation, which must be a ConcatVar;
/// both are references or variables put there directly. Value i of the parameter belongs to member i. Nothing
/// is stored or cached, and data that are written are dropped.
///
/// Edge:   a sweep that is its own parameter, or whose concatenation is being read on this thread already,
///         can't be read: ER_FAILED.
class ORRERYCOREVARIABLES_EXPORT SweptVarStrategy : public IVariableStrategy
{
public:
    /// `owner` isn't owned and must outlive the strategy.
    explicit SweptVarStrategy(Variable* owner);

    /// Refer to the parameter. Errors: those of PropertyObject::SetPropertyRef.
    ERESULT SetParameter(const Variable* variable);

    /// Refer to the concatenation. Errors: those of PropertyObject::SetPropertyRef.
    ///
    /// Edge:   any Variable is taken; one that is no ConcatVar counts as absent when it is read.
    ERESULT SetConcatVar(const Variable* variable);

    /// Read the parameter's value of the member that the offset lies in.
    ///
    /// Errors: ER_INVALID_ARGUMENT without parameter, concatenation or members, past the end and for a null
    ///         `out`; ER_FAILED for a member up to that one that doesn't resolve; else what the parameter
    ///         says.
    ERESULT GetValueAt(BVariant* out, std::uint64_t offset) const override;

    /// Read offsets [start, end); an end of 0 stands for "to the last".
    ///
    /// Shape:  that of the value at offset 0, with end - start in front; end - start alone if that value is a
    ///         scalar. Elements past the last offset are zero.
    /// Errors: ER_INVALID_ARGUMENT, with *out untouched, without parameter or concatenation and for a null
    ///         `out`. ER_FAILED for a member that doesn't resolve and else the code of the parameter, with
    ///         the array as far as it was filled in *out. std::runtime_error "unknown type" without an offset
    ///         0, and "Creating with run-time wellknowntype is not allowed."; std::length_error for an end
    ///         below the start; what setElement throws for a value that is no scalar or doesn't fit the type
    ///         of the one at offset 0. *out is then untouched.
    /// Cost:   linear in the members and the elements.
    ERESULT GetValueRange(BVariant* out, std::uint64_t start, std::uint64_t end) const override;

    /// That of the concatenation; 0 without one.
    std::uint64_t GetMaxIndepOffset() const override;

    /// Always 0.
    std::uint64_t GetElementDimCount() const override;

    /// Clears the vector.
    ///
    /// Errors: ER_INVALID_ARGUMENT for a null `shape`.
    ERESULT GetElementShape(std::vector<std::uint64_t>* shape) const override;

    ~SweptVarStrategy() override;

    std::shared_ptr<IVariableStrategy> Copy(Variable* owner) const override;

    /// "SweptStrategy".
    QString GetType() const override;

    /// The text of GetType().
    static const QString& StaticType();

private:
    friend class SweptVariable; // sets the same children

    static const QString& sParam();      ///< "Param"
    static const QString& sConcatData(); ///< "DependVar"

    static const QString s_param;
    static const QString s_concatData;
};

} // namespace Orrery
