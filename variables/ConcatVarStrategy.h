#pragma once

#include "variables/IVariableStrategy.h"

namespace Orrery {

/// Other variables one after the other on one axis: offset k of the whole is an offset of one of its members.
///
/// The members are the numbered children of the owning Variable, in numeric order: references, or variables
/// put there directly. Nothing is copied or cached; every request reads the members anew, through the virtual
/// operations of Variable. A concatenation isn't bound to its members in the dirty graph, and drops data that
/// are written.
///
/// A member that leads to no Variable doesn't resolve: it counts 0 offsets, and a read that comes to it
/// fails. So does one that is being read on this thread already, as in a concatenation that contains itself,
/// and one behind a thousand nested ones.
class ORRERYCOREVARIABLES_EXPORT ConcatVarStrategy : public IVariableStrategy
{
public:
    /// `owner` isn't owned and must outlive the strategy.
    explicit ConcatVarStrategy(Variable* owner);

    /// Refer to one more member, behind the last one. The same one again is a further member.
    ///
    /// Errors: those of PropertyObject::SetPropertyRef; ER_FAILED behind the largest number that a child can
    ///         have.
    /// Cost:   logarithmic in the number of children.
    ERESULT AddVariable(const Variable* variable);

    /// Read one offset from the member that it lies in.
    ///
    /// Errors: ER_INVALID_ARGUMENT without members, past the end and for a null `out`; ER_FAILED for a member
    ///         before that one, or that one itself, that doesn't resolve; else what the member says.
    ERESULT GetValueAt(BVariant* out, std::uint64_t offset) const override;

    /// Read offsets [start, end); an end of 0 stands for "to the last".
    ///
    /// Shape:  the pieces of all members touched, joined as appendValues joins them: in their common type, in
    ///         one dimension or along the row or column that the first such piece is. One piece alone comes
    ///         as it is, even as a matrix.
    /// Errors: ER_FAILED with a null *out where there is nothing to read; ER_INVALID_ARGUMENT with a null
    ///         *out without members, and with what there is in *out for an end past the last offset;
    ///         ER_FAILED for a member that doesn't resolve, and else the code of the member, with the pieces
    ///         before it in *out. The exceptions of appendValues and those of members pass through, with the
    ///         pieces joined so far in *out. ER_INVALID_ARGUMENT for a null `out`. std::bad_alloc for
    ///         nested concatenations that this machine's memory can't hold, before it is full.
    /// Cost:   linear in the members and the elements read.
    ERESULT GetValueRange(BVariant* out, std::uint64_t start, std::uint64_t end) const override;

    /// The sum over the members; it wraps at 64 bits. A member that doesn't resolve counts as 0.
    std::uint64_t GetMaxIndepOffset() const override;

    /// Those of the first member, if it is a child and no reference; else 0.
    std::uint64_t GetElementDimCount() const override;

    /// That of the first member, if it is a child and no reference; else empty.
    ///
    /// Errors: what the member says; ER_INVALID_ARGUMENT for a null `shape`.
    ERESULT GetElementShape(std::vector<std::uint64_t>* shape) const override;

    ~ConcatVarStrategy() override;

    std::shared_ptr<IVariableStrategy> Copy(Variable* owner) const override;

    /// "ConcatStrategy".
    QString GetType() const override;

    /// The text of GetType().
    static const QString& StaticType();
};

} // namespace Orrery
