#pragma once

#include "foundations/property/ErrorResult.h"
#include "foundations/property/PropertyHandle.h"
#include "foundations/variant/BVariant.h"
#include "orrerycorevariables_export.h"
#include "tracking/DirtyTracker.h"

#include <QString>

#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace Orrery {

using Brindle::Quay::BVariant;

class Variable;

/// What a Variable does with its data: the interchangeable half of a Variable.
///
/// A strategy owns no data and isn't saved. All it works on are children of the Variable behind its back
/// reference, so that a saved tree holds everything and a reload only has to choose the strategy again.
///
/// Shape:  the data have one axis, their first dimension. A position on it is an offset; at each offset lies
///         one element, which may itself be an array.
/// Threads: one thread at a time, like the Variable, but for push().
class ORRERYCOREVARIABLES_EXPORT IVariableStrategy
{
public:
    /// `owner` isn't owned, must outlive the strategy, and is never exchanged: not even by a move of the
    /// Variable, after which the strategy goes on naming the object that it was made for.
    ///
    /// Errors: std::invalid_argument for a null owner.
    explicit IVariableStrategy(Variable* owner);

    IVariableStrategy(const IVariableStrategy&) = delete;
    IVariableStrategy& operator=(const IVariableStrategy&) = delete;

    /// The whole data; *flag receives the flag that belongs to them, and may be null.
    ///
    /// By default the data are what GetValueRange() yields over all offsets, and the flag is IsCellArrayFalse.
    /// Errors: by default a failing GetValueRange() gives a null value, which can't be told from empty data.
    virtual BVariant GetData(IsCellArray* flag) const;

    /// Store data; by default they are dropped. Returns the Variable behind the back reference.
    virtual Variable& UpdateData(const BVariant& data, IsCellArray flag);

    /// Read the element at one offset.
    virtual ERESULT GetValueAt(BVariant* out, std::uint64_t offset) const = 0;

    /// Read offsets [start, end); an end of 0 stands for "to the last".
    virtual ERESULT GetValueRange(BVariant* out, std::uint64_t start, std::uint64_t end) const = 0;

    /// The number of offsets.
    virtual std::uint64_t GetMaxIndepOffset() const = 0;

    /// The number of dimensions of one element; 0 for scalars.
    virtual std::uint64_t GetElementDimCount() const = 0;

    /// The dimensions of one element. The vector is cleared first.
    virtual ERESULT GetElementShape(std::vector<std::uint64_t>* shape) const = 0;

    virtual ~IVariableStrategy();

    /// A strategy of the same kind for `owner`. Nothing else is copied: the data are in the children, which
    /// the copy of the Variable has by then.
    virtual std::shared_ptr<IVariableStrategy> Copy(Variable* owner) const = 0;

    /// The text by which a reload selects this kind of strategy.
    virtual QString GetType() const = 0;

    /// The dirty tracker of the Variable behind the back reference; null while that is moved from.
    std::shared_ptr<AbstractDirtyTracker> getDirtyTracker() const;

protected:
    /// Store `data` and `flag` in the child "Data" of the owner, which is made if it is missing or no value, and
    /// mark the owner's notifier: its next announcement tells of them.
    ///
    /// Errors: none are reported. The data are dropped while another thread holds the mutex, and when "Data"
    ///         can't be put in.
    /// Threads: may be called from several threads at once. A push within a push on one thread goes through;
    ///         one beside a push of another thread doesn't wait, it loses its data.
    void push(const BVariant& data, IsCellArray flag);

    /// The Variable behind the back reference; never null.
    Variable* backRef() const { return m_backRef; }

    /// For a strategy that must not be written to while it works: hold it for the length of that work.
    std::recursive_mutex& mutex() const { return m_mutex; }

private:
    friend class Variable; // compares and follows the back reference

    /// Whether the back reference dangles, as it may after a move of the owner and the end of the moved-from one.
    bool ownerIsGone() const { return m_movedFrom.IsExpired(); }

    Variable* const m_backRef;
    mutable std::recursive_mutex m_mutex;
    PropertyHandle m_movedFrom; // to the owner once that was moved from
};

} // namespace Orrery
