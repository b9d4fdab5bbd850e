#pragma once

#include "variables/IVariableStrategy.h"

namespace Orrery {

/// Evenly spaced axis: start, step and count are stored, values are computed on demand.
///
/// Element i is double(i) * step + start. Nothing accumulates, so the error doesn't add up along the axis.
/// All state is in the children "Start", "Step" and "Count" of the owning Variable, each of which keeps the
/// type that it was set with and is converted when it is read. A missing or unreadable step counts as 1.
/// Writing data does nothing, and nothing here touches the dirty tracker.
class ORRERYCOREVARIABLES_EXPORT RangeVarStrategy : public IVariableStrategy
{
public:
    /// `owner` isn't owned and must outlive the strategy.
    explicit RangeVarStrategy(Variable* owner);

    /// Store a parameter of the range. It takes effect at the next read; nobody is told.
    ///
    /// Shape:  one element: a scalar, or an array whose dimensions are all 1.
    /// Errors: ER_INVALID_ARGUMENT for any other shape; else what PropertyObject::SetProperty says. The
    ///         former parameter is then kept.
    /// Edge:   neither type, sign nor range of the value is examined.
    ERESULT SetStart(const BVariant& value);
    ERESULT SetStep(const BVariant& value);  ///< a range without one counts by 1
    ERESULT SetCount(const BVariant& value); ///< how many values there are

    /// The three parameters as numbers.
    ///
    /// Errors: ER_NOT_FOUND without "Start" or "Count", ER_INVALID_ARGUMENT for a null pointer; nothing is
    ///         then written. ER_FAILED if one of the two can't be read as a number, with *start possibly
    ///         written.
    ERESULT GetParams(double* start, double* step, std::uint64_t* count) const;

    /// Read the value at one offset, as a scalar.
    ///
    /// Errors: those of GetParams(), and ER_INVALID_ARGUMENT at or past the count; *out is then null and one
    ///         warning goes to the Qt log. ER_INVALID_ARGUMENT for a null `out`.
    ERESULT GetValueAt(BVariant* out, std::uint64_t offset) const override;

    /// Read offsets [start, end); an end of 0 stands for "to the last".
    ///
    /// Shape:  one dimension of end - start doubles. Neither bound is limited by the count: the axis goes on.
    /// Errors: those of GetParams(); *out is then null and one warning goes to the Qt log.
    ///         ER_INVALID_ARGUMENT for a null `out`. std::length_error for an end below the start and for
    ///         more values than an array can have, std::bad_alloc for more than memory can hold; *out is then
    ///         untouched.
    /// Cost:   one allocation; each value is written once.
    ERESULT GetValueRange(BVariant* out, std::uint64_t start, std::uint64_t end) const override;

    /// The count; 0 if it is missing or can't be read as one.
    std::uint64_t GetMaxIndepOffset() const override;

    /// Always 0: elements are scalars.
    std::uint64_t GetElementDimCount() const override;

    /// Clears the vector: elements are scalars.
    ///
    /// Errors: ER_INVALID_ARGUMENT for a null `shape`.
    ERESULT GetElementShape(std::vector<std::uint64_t>* shape) const override;

    ~RangeVarStrategy() override;

    std::shared_ptr<IVariableStrategy> Copy(Variable* owner) const override;

    /// "RangeStrategy".
    QString GetType() const override;

    /// The text of GetType().
    static const QString& StaticType();
};

} // namespace Orrery
