#pragma once

#include "foundations/property/AbstractProperty.h"
#include "variables/IVariableStrategy.h"

#include <QList>

namespace Orrery {

class Function;
class PropertyObject;
class SimpleProperty;

/// Computed data: the result of a measurement over argument variables, kept in the child "Data" of the owning
/// Variable until one of its inputs changes.
///
/// Which measurement with which parameters is the child "Function"; the arguments are references in the child
/// folder "Arguments". A read of a dirty owner computes, a read of a clean one returns what is stored. Each run
/// works on clones of the measurement, which outlive it.
///
/// Edge:   an argument that is a function variable itself is not computed by this one, which reads what the
///         argument has stored and marks it clean. Read the inner one first.
/// Edge:   after a reload, and in a copy of the Variable, nothing tells the owner of changes until Relink().
/// Threads: a read may come from a second thread while one computes; it gets the stored value at once. Data that
///         another thread writes during a computation are dropped.
class ORRERYCOREVARIABLES_EXPORT FunctionVarStrategy : public IVariableStrategy
{
public:
    /// `owner` isn't owned and must outlive the strategy. It is marked dirty.
    explicit FunctionVarStrategy(Variable* owner);

    /// The stored result, after a computation if the owner is dirty; *flag receives its flag, and may be null.
    ///
    /// Errors: std::logic_error "invalid argument in list; operation is undefined!" if an argument can't be
    ///         resolved to a Variable; the owner stays updating then, so that later reads return the stored
    ///         value without a new attempt until an input changes. std::logic_error "no data in GetData()!?
    ///         invalid/corrupted memory." if "Data" is no value. A std::exception of the measurement goes to the
    ///         debug log only, and the stored value stays; one of another type passes through.
    /// Edge:   without a "Function", and with one whose measurement this process doesn't know, nothing is
    ///         computed. A null value if the computation has destroyed the owner.
    /// Edge:   a result that was computed while more than a thousand joined variables were being read, one through the
    ///         other, may lack what lies deeper; the owner stays dirty then.
    /// Cost:   a clean read copies the stored value, which shares the payload of an array.
    BVariant GetData(IsCellArray* flag) const override;

    /// Store data, which stand until the next read of the dirty owner computes.
    Variable& UpdateData(const BVariant& data, IsCellArray flag) override;

    /// Read one offset.
    ///
    /// Errors: what GetData() throws; ER_INVALID_ARGUMENT for an offset above 0 of data with one offset or none,
    ///         and for a null `out`; what Orrery::GetAt reports else. *out is then untouched.
    ERESULT GetValueAt(BVariant* out, std::uint64_t offset) const override;

    /// Read offsets [start, end); an end of 0 stands for "to the last".
    ///
    /// Shape:  all offsets give the whole value in its own shape and share its payload. A part is cut along the
    ///         first dimension.
    /// Errors: what GetData() throws. ER_FAILED with *out the empty data themselves; ER_FAILED with a null *out if
    ///         `start` is at or past GetMaxIndepOffset(); ER_FAILED with *out untouched if the part can't be cut;
    ///         ER_INVALID_ARGUMENT for a null `out`.
    ERESULT GetValueRange(BVariant* out, std::uint64_t start, std::uint64_t end) const override;

    /// The first dimension above 1, wherever it stands; 1 if there is none, 0 for empty data.
    std::uint64_t GetMaxIndepOffset() const override;

    /// The number of all dimensions; unlike stored data, a result doesn't take one off for its axis.
    std::uint64_t GetElementDimCount() const override;

    /// All dimensions but the first.
    ///
    /// Errors: ER_INVALID_ARGUMENT for a null `shape`.
    ERESULT GetElementShape(std::vector<std::uint64_t>* shape) const override;

    ~FunctionVarStrategy() override;

    std::shared_ptr<IVariableStrategy> Copy(Variable* owner) const override;

    /// "FunctionStrategy".
    QString GetType() const override;

    /// Append a reference to an argument, bound late if it has no place in the tree yet. The owner is marked
    /// dirty, depends on the argument from now on and passes its removal on.
    ///
    /// Errors: ER_INVALID_ARGUMENT for null; what the tree reports else. No argument is added then.
    /// Edge:   an argument may be added twice; a warning tells of the second connection.
    ERESULT AddArgumentRef(const Variable* argument);

    /// Empty the folder of the arguments. What is stored stays valid: the owner isn't told, and goes on depending
    /// on the former arguments.
    void DeleteArguments();

    /// Fill the list with the references to the arguments, which stay the owner's; former entries go.
    ///
    /// Errors: ER_NOT_FOUND without a folder of arguments, with an empty list; ER_INVALID_ARGUMENT for null.
    ERESULT GetArguments(QList<AbstractProperty*>* list) const;

    /// Take over a Function, which is renamed to "Function", in place of the present one, which is destroyed. The
    /// owner is marked dirty and depends on it.
    ///
    /// Errors: ER_INVALID_ARGUMENT for null, with nothing changed. When the tree refuses it, the code; the Function
    ///         stays the caller's then and the present one in its place, but the owner depends on the new one.
    ERESULT SetFunction(Function* function);

    /// The Function, owned by the owner of this strategy; null without one.
    Function* GetFunction() const;

    /// Make the owner depend on its arguments and its Function again: after a reload or a copy the references
    /// are there, but nothing tells the owner of changes and removals. May be repeated at any time. An addition to
    /// what a host needs by hand; RelinkFunctionVariables() does it for a whole tree.
    ///
    /// The owner is marked dirty if it has come to depend on something anew, as that may have changed unnoticed.
    /// Errors: ER_NOT_FOUND if an argument can't be resolved; the others are linked all the same.
    ERESULT Relink();

    /// The text of GetType().
    static const QString& StaticType();

private:
    /// The property with the data, after a computation if the owner is dirty; null if that has destroyed the owner.
    const SimpleProperty* readDataProperty() const;

    /// Its value, valid until "Data" changes; null data if the owner is gone.
    const BVariant& upToDateData() const;

    /// Computes unless another read is at it. False if that has destroyed the owner.
    bool computeIfDirty() const;

    void Compute() const;
    void Init();

    static const QString& sArguments(); ///< "Arguments"
    static const QString& sFunction();  ///< "Function"
    static const QString& sData();      ///< "Data"

    friend class FunctionVar; // reaches the children of a Variable whose strategy is another one

    static ERESULT AppendArgument(Variable& owner, Variable* argument);
    static void ClearArguments(Variable& owner);
    static ERESULT ListArguments(const Variable& owner, QList<AbstractProperty*>* list);
    static ERESULT ReplaceFunction(Variable& owner, Function* function);
    static Function* FunctionOf(const Variable& owner);
};

} // namespace Orrery
