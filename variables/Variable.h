#pragma once

#include "foundations/property/PropertyObject.h"
#include "foundations/variant/BVariant.h"
#include "orrerycorevariables_export.h"
#include "tracking/DirtyTracker.h"
#include "variables/IVariableStrategy.h"

#include <QString>
#include <QVector>

#include <cstdint>
#include <memory>
#include <vector>

namespace Orrery {

struct DataObserver;
class Units;

/// Named data in the property tree, which a host can read, update, clone, save and reload.
///
/// A Variable holds no data of its own. What can be saved lies in its children; what it does with data lies in
/// its one strategy, which can be exchanged at any time and is chosen again from the child "VariableStrategy"
/// after a reload. A fresh Variable has the explicit strategy and null data.
///
/// A Variable tells clients of its changes through its notifier, and whatever is computed from it through its
/// dirty tracker: an update makes the tracker dirty, the next read of stored data makes it clean.
///
/// It says against what it is measured, by references to independent variables in its child folder "Indep", and in
/// what, by its children "Unit" and "DisplayUnit". The strategy plays no part in that.
///
/// Shape:  the data have one axis, their first dimension. A position on it is an offset; at each offset lies
///         one element, which may itself be an array.
/// Threads: one thread at a time, but for UpdateData() of a strategy that stores data: of two that meet, one
///         loses its data.
class ORRERYCOREVARIABLES_EXPORT Variable : public PropertyObject
{
public:
    /// Its signals tell of the changes of a Variable; defined in tracking/Notifier.h.
    class Notifier;

    using Tracker = DirtyTracker<Variable, Variable*>; ///< its node of the dirty graph

    Variable();                             ///< unnamed, with the explicit strategy and null data
    explicit Variable(const QString& name); ///< with the explicit strategy and null data
    /// With the explicit strategy and `data`; the tracker is dirty until the first read.
    Variable(const QString& name, const BVariant& data);

    /// Clones of the children and a strategy of the same kind. Notifier and tracker are new, the tracker clean;
    /// a source that references follow through an observer gives the copy an observer of its own.
    ///
    /// Edge:   "VariableStrategy" of a copy says "ExplicitDataStrategy" whatever the source is: the copy works
    ///         as its source does until it is saved, and comes back as an explicit Variable.
    Variable(const Variable& other);

    /// Hands the children of `other` over, and its place in the tree: if `other` has a parent, it is taken out
    /// of it, belongs to the caller from then on, and this Variable is put in under its own name. A parent
    /// that this Variable has had before is left.
    ///
    /// Edge:   the strategy comes along, but goes on working on `other` as long as that lives: reads through this
    ///         Variable see the data of `other`, and every write copies this Variable onto `other` first. A copy
    ///         assignment to this Variable ends that, and so does the end of `other`: the next operation makes a
    ///         strategy of the same kind for this Variable then.
    /// Edge:   a Variable whose destruction is under way (in a handler of its Removed) is copied instead.
    /// Edge:   a moved-from Variable is for destruction or copy assignment; until then its reading operations give
    ///         null, 0 or ER_FAILED, and it drops data.
    /// Notifier, tracker and observer come along and serve this object from then on: its former clients hear
    /// nothing of that, and those of `other` hear of this one. During the move both have them.
    ///
    /// Edge:   a move to itself leaves the Variable without a strategy, a notifier and a tracker.
    Variable(Variable&& other); // NOLINT(performance-noexcept-move-constructor): handlers run, trees grow

    /// As the copy construction; the former children are gone. The name is taken over by a Variable that has
    /// neither a name nor a parent. The notifier stays with its connections, and no signal is sent; the tracker
    /// is new, clean and without edges.
    Variable& operator=(const Variable& other);

    /// As the move construction; children of this Variable stay unless one of the same name replaces them.
    Variable& operator=(Variable&& other); // NOLINT(performance-noexcept-move-constructor): as above

    const QString& PropertyObjType() const override;
    unsigned int GetTypeFlags() const override;

    /// Choose the strategy that the child "VariableStrategy" names; without that child keep the present one.
    ///
    /// Errors: std::runtime_error if the child holds a value that isn't one text; std::logic_error as
    ///         SetStrategy(). A text that names no strategy gives the explicit one and a warning on the log.
    void OnDeserialization() override;

    /// Announces the removal while name and data are still there; no PropertyHandle leads here any more then.
    ~Variable() override;
    AbstractProperty* DoClone() const override;

    /// Store data through the strategy; a strategy that computes its data drops them. Returns this Variable.
    ///
    /// The tracker is marked dirty first, unless it is updating. `notify` tells whether clients hear of it.
    /// Edge:   a client may destroy the Variable; the result then refers to nothing.
    virtual Variable& UpdateData(const BVariant& data, bool notify = true,
                                 IsCellArray flag = IsCellArrayFalse);

    /// Announce data that were changed by earlier quiet updates. Returns this Variable.
    ///
    /// Edge:   a client may destroy the Variable; the result then refers to nothing.
    Variable& UpdateData();

    /// The number of offsets.
    virtual std::uint64_t GetMaxIndepOffset() const;

    /// Read the element at one offset.
    ///
    /// Errors: the strategy's code. ER_FAILED past the end of stored data, with *out untouched.
    virtual ERESULT GetValueAt(BVariant* out, std::uint64_t offset) const;

    /// Read offsets [start, end); an end of 0 stands for "to the last".
    ///
    /// Errors: the strategy's code. For stored data ER_FAILED, with a null *out if `start` is at or past
    ///         GetMaxIndepOffset() and *out untouched else.
    virtual ERESULT GetValueRange(BVariant* out, std::uint64_t start, std::uint64_t end) const;

    /// The number of dimensions of one element; 0 for scalars.
    virtual std::uint64_t GetElementDimCount() const;

    /// The dimensions of one element. The vector is cleared first.
    virtual ERESULT GetElementShape(std::vector<std::uint64_t>* shape) const;

    /// The whole data; *flag receives the flag that was stored with them, and may be null.
    ///
    /// Edge:   reading stored data makes the child "Data" if there is none.
    /// Cost:   stored arrays share their payload with the result.
    BVariant GetData(IsCellArray* flag = nullptr) const;

    /// UpdateData() with IsCellArrayTrue, announced to clients.
    Variable& UpdateDataAsCellArrayFromBVariant(const BVariant& data);

    /// Append a reference to an independent variable, which stays where it is in the tree and is owned by
    /// nobody through this. The reference is bound late if the two have no common tree yet. The tracker is marked
    /// dirty.
    ///
    /// Errors: ER_INVALID_ARGUMENT for null, with nothing changed; what the tree reports else.
    /// Edge:   a child "Indep" that is no folder is deleted, with a warning on the log.
    ERESULT AddIndepVariableRef(const Variable* indep);

    /// Make `indep` the only independent variable.
    ///
    /// Errors: as AddIndepVariableRef(); the former references are gone even then, and for null.
    ERESULT SetIndepVariableRef(const Variable* indep);

    /// The number of entries of the folder of independents, those included that can't be resolved.
    int GetIndepCount() const;

    /// The independent variable at a position, which is not the number in its name: positions close up when one is
    /// deleted. It isn't owned.
    ///
    /// Errors: *out is untouched. ER_NOT_FOUND without that many independents, and, with a warning on the log, for
    ///         an entry that leads to no Variable; ER_INVALID_ARGUMENT for a null `out`.
    ERESULT GetIndepVariable(Variable** out, int index) const;

    /// One integer for each independent, of which the host knows the meaning. A stored map is appended to *out;
    /// without one *out becomes as many zeros as there are independents.
    ///
    /// Errors: ER_FAILED for a stored value that isn't made of integers; ER_INVALID_ARGUMENT for null.
    ERESULT GetIndependentMap(QVector<int>* out) const;

    /// Store such a map, of any length. The tracker isn't marked.
    ERESULT SetIndependentMap(const QVector<int>& map);

    /// Whether all entries of the independent map are 0; true also for a map that can't be read.
    bool IsExpanded() const;

    /// The units of the data, or those in which to show them; owned by this Variable, and valid until they are
    /// replaced.
    ///
    /// Errors: ER_NOT_FOUND with a null *out without such units; ER_INVALID_ARGUMENT for a null `out`.
    ERESULT GetUnits(const Units** out) const;
    ERESULT GetDisplayUnits(const Units** out) const; ///< those in which to show the data

    /// The same, with default units (not valid, a plain number) where there are none. Display units fall back to
    /// the units of the data first.
    const Units& GetUnits() const;
    const Units& GetDisplayUnits() const; ///< falls back to those of the data

    /// Store a copy of the units. Display units stay as they are, even if they don't fit any more.
    ERESULT SetUnits(const Units& units);

    /// Store a copy of the units.
    ///
    /// Errors: ER_INVALID_ARGUMENT, with nothing changed, if the data have units that aren't commensurable.
    ERESULT SetDisplayUnits(const Units& units);

    /// The units of an independent variable; default units if there are none or the independent isn't found.
    const Units& GetUnitsOfIndep(int index) const;

    /// Store a copy of the units in an independent variable, which other Variables may share. One that isn't found
    /// makes a default independent first (VariableDefaults), which stays.
    ///
    /// Errors: ER_NOT_FOUND if there is none at that position even then.
    ERESULT SetUnitsOfIndep(const Units& units, int index);

    /// The present strategy; empty for a moved-from Variable.
    std::weak_ptr<IVariableStrategy> GetStrategyPtr() const;

    /// The notifier, owned by this Variable; null for a moved-from one.
    Notifier* getNotifier() const { return m_notifier.get(); }

    /// The dirty tracker; null for a moved-from Variable. Copy assignment replaces it.
    const std::shared_ptr<Tracker>& getDirtyTracker() const { return m_dirtyTracker; }

    /// The observer that follows this Variable for references, which the notifier holds; null by default and
    /// for a moved-from Variable, which takes none.
    void setObserver(std::shared_ptr<DataObserver> observer);
    std::shared_ptr<DataObserver> getObserver() const; ///< shares its ownership

    /// Give this Variable a strategy of exactly the type S, keep the present one if it is that, and note its
    /// kind in "VariableStrategy". No other child is touched. The result is owned by the Variable.
    ///
    /// Edge:   S is one of the strategy classes of this library.
    /// Errors: std::logic_error "fatal error in SetStrategy()" if "VariableStrategy" can't be written, as when
    ///         a folder of that name is there; the strategy is in place then.
    template <class S>
    S* SetStrategy();

    /// "Variable", the name under which the class is saved.
    static const QString& StaticType();

    static const QString& sIndependentVars();            ///< "Indep"
    static const QString& sUnitsPropertyName();          ///< "Unit"
    static const QString& sDisplayUnitsPropertyName();   ///< "DisplayUnit"
    static const QString& sStrategyPropertyName();       ///< "VariableStrategy"
    static const QString& sIndependentMapPropertyName(); ///< "IndependentMap"

protected:
    /// Tells the clients of its new name or place.
    void OnPathChanged() override;

    /// To be called first in the destructor of each typed Variable of this library, as in the one of this class:
    /// what handlers find is then still whole.
    void announceRemoval();

    /// The Variable whose children the present strategy works on: this one, but for after a move. What a typed
    /// Variable forwards to its strategy acts on that, whatever kind the strategy is. Null in a moved-from Variable.
    ///
    /// The pointer keeps the strategy alive, not the Variable.
    std::shared_ptr<Variable> strategyOwner() const;

private:
    friend class RangeVar;     // reading its parameters verifies the back reference
    friend class MemberReader; // reads many variables, most of which are plain

    /// What every construction but a copy or a move, and every copy assignment, starts a Variable with.
    void Init();

    /// Copies this Variable onto the one behind the strategy's back reference, which does nothing while that
    /// is this one (or one above it). Returns this Variable.
    const Variable& verifyBackref(IVariableStrategy& strategy) const;

    /// The strategy, held for the length of a call: what it calls may exchange it. Null in a moved-from Variable.
    std::shared_ptr<IVariableStrategy> strategyInUse() const;

    /// The strategy, if reading through it only looks at what is stored in this Variable: nobody can exchange it
    /// meanwhile, so it needn't be held. Null for any other one.
    const IVariableStrategy* plainStrategy() const;

    static const QString s_independentVars;
    static const QString s_units;
    static const QString s_displayUnits;
    static const QString s_strategy;
    static const QString s_independentMap;

    std::shared_ptr<Notifier> m_notifier;
    mutable std::shared_ptr<IVariableStrategy> m_strategy; // a read may find that it has to be made anew
    std::shared_ptr<Tracker> m_dirtyTracker;
};

extern template ORRERYCOREVARIABLES_EXPORT Variable* PropertyObject::GetPtr<Variable>(const QString& name);

} // namespace Orrery
