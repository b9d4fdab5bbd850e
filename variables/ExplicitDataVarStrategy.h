#pragma once

#include "variables/IVariableStrategy.h"

namespace Orrery {

/// Stored data: the value of the child "Data" of the owning Variable.
///
/// Reading creates a missing "Data", so that an explicit Variable always has one.
/// Cost:   nothing is cached; every reading operation takes "Data" anew, which shares the payload of an array.
class ORRERYCOREVARIABLES_EXPORT ExplicitDataVarStrategy : public IVariableStrategy
{
public:
    /// `owner` isn't owned and must outlive the strategy. It has a child "Data" afterwards.
    explicit ExplicitDataVarStrategy(Variable* owner);

    /// A copy of the value of "Data", with its flag; null if it had to be made.
    BVariant GetData(IsCellArray* flag) const override;

    Variable& UpdateData(const BVariant& data, IsCellArray flag) override;

    /// Read one offset, as Orrery::GetAt does.
    ///
    /// Errors: ER_FAILED past the end, ER_INVALID_ARGUMENT for a null `out`; *out is then untouched.
    /// Edge:   null and empty data are a success at any offset: *out is a copy of them.
    /// Cost:   constant on a vector, without a heap allocation.
    ERESULT GetValueAt(BVariant* out, std::uint64_t offset) const override;

    /// Read offsets [start, end); an end of 0 stands for "to the last".
    ///
    /// Shape:  all offsets give the whole value in its own shape and share its payload. A part is cut along
    ///         the first dimension, so a part of a 1 x n row fails, though the row has n offsets.
    /// Errors: ER_FAILED with a null *out if `start` is at or past GetMaxIndepOffset(); ER_FAILED with *out
    ///         untouched if the part can't be cut; ER_INVALID_ARGUMENT for a null `out`.
    /// Cost:   a part: one copy of its elements.
    ERESULT GetValueRange(BVariant* out, std::uint64_t start, std::uint64_t end) const override;

    /// The first dimension above 1, wherever it stands; 1 if there is none, 0 for empty data.
    std::uint64_t GetMaxIndepOffset() const override;

    /// The number of dimensions less one; 0 for none. A 1 x n row counts one, though it has n offsets.
    std::uint64_t GetElementDimCount() const override;

    /// All dimensions but the first.
    ///
    /// Errors: ER_INVALID_ARGUMENT for a null `shape`.
    ERESULT GetElementShape(std::vector<std::uint64_t>* shape) const override;

    ~ExplicitDataVarStrategy() override;

    std::shared_ptr<IVariableStrategy> Copy(Variable* owner) const override;
    QString GetType() const override;

    /// The text of GetType().
    static const QString& StaticType();

private:
    /// What GetData() copies; valid until "Data" changes.
    const BVariant& storedData() const;
};

} // namespace Orrery
