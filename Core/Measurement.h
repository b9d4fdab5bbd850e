#pragma once

#include "foundations/property/Extensions.h"
#include "foundations/variant/BVariant.h"
#include "orrerycorevariables_export.h"

#include <QList>
#include <QString>

#include <cstdint>
#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

namespace Orrery {

using Brindle::Quay::BVariant;

class Variable;

/// How measurements describe what they take.
namespace IO {

/// What a measurement takes as its input.
enum class InputType : std::int32_t
{
    None = 0,    ///< nothing is said
    Scalar = 1,  ///< one number
    Vector = 2,  ///< numbers along one axis
    Variable = 3 ///< a whole Variable, with its units and axes
};

/// The kind of expression that a measurement stands for; nothing distinguishes kinds yet.
enum class ExpressionType : std::int32_t
{
    None = 0 ///< the only kind
};

/// The declaration of one parameter of a measurement.
struct Parameter
{
    QString name;        ///< short, such as "C-0"
    QString description; ///< for a person
    BVariant value;      ///< the default
};

} // namespace IO

/// Carries out one measurement. Made by make_probe() and owned by whoever asked for it.
class ORRERYCOREVARIABLES_EXPORT AbstractProbe
{
public:
    AbstractProbe() = default;                     ///< bound to nothing yet
    AbstractProbe(const AbstractProbe&) = default; ///< what a derived class adds decides what is copied
    AbstractProbe& operator=(const AbstractProbe&) = default; ///< nothing of its own to assign
    virtual ~AbstractProbe();

    /// Run the measurement. Returns its output, which belongs to whoever owns it already: the measurement's
    /// output to its owner, a Variable that was made for the result to the caller.
    ///
    /// Errors: what the measurement throws passes through.
    virtual Variable* run(void* argument = nullptr) = 0;
};

/// Marks a measurement as one that can be extended; T is the measurement's base class.
template <class T>
class ORRERYCOREVARIABLES_EXPORT Extension : public Extensions::IAbstractExtension
{
public:
    Extension();                                  ///< a new one, shared with nobody
    Extension(const Extension& other);            ///< a new one
    Extension& operator=(const Extension& other); ///< changes nothing
    ~Extension() override;
};

/// An operation on data of type T: a name, declared parameters with their values, a stack of inputs and a place
/// for the output. It makes the probe that carries it out.
///
/// A measurement in the MeasurementManager is a pattern and never run: who wants to run it clones it, fills the
/// clone and makes a probe of that. Setters return the object itself, so that calls can be chained.
///
/// T is Variable. A host derives its own measurements from Measurement<Variable>: get_name(), make_probe() (of
/// a Probe<Its own class, Variable, Variable>), clone() and an `apply(Variable*)` for the probe to call are all that
/// it needs.
///
/// Inputs and output aren't owned, and nothing tells a measurement of their end.
/// Threads: no lock; each clone is used by one thread at a time. Clones may be made on several threads at once.
template <class T>
class ORRERYCOREVARIABLES_EXPORT Measurement : public Extensions::IExtender
{
public:
    /// Nothing is set, and the extension is new.
    Measurement();

    /// Takes over all fields, stack and output included; the extension is shared from then on.
    Measurement(const Measurement& other);
    Measurement& operator=(const Measurement& other); ///< all fields, the extension shared

    ~Measurement() override;

    /// The name under which the manager knows the measurement; unique inside its category.
    virtual QString get_name() = 0;

    /// A new probe bound to this object, which must outlive it; owned by the caller. Never null.
    virtual AbstractProbe* make_probe() = 0;

    /// A new object of the concrete class with all fields of this one; owned by the caller. Never null.
    virtual Measurement<T>* clone() const = 0;

    /// Whether `input` can be measured, with the reason in `why` if it can't. By default everything can, null
    /// too, and `why` is left alone.
    virtual bool is_valid(const T* input, QString& why);

    QString get_category() const;                   ///< under which the manager files it
    QString get_description() const;                ///< one line for a person
    QString get_symbol() const;                     ///< a short sign for formulas; may be empty
    IO::ExpressionType get_expression_type() const; ///< always None so far
    IO::InputType get_input_type() const;           ///< a hint for those who offer inputs; nothing tests it

    /// Shared by all copies of one measurement.
    std::shared_ptr<Extension<Measurement<T>>> get_extension() const;

    QList<IO::Parameter> get_parameters() const; ///< the declared parameters, with their defaults

    /// The current values, by position. There may be more or fewer than get_parameters() declares.
    std::vector<BVariant> get_parameter_values() const;

    /// The stack itself; valid as long as this object.
    const QList<T*>& get_stack() const;

    /// Append an input to the stack; null is taken too.
    Measurement<T>* push(T* input);

    /// Empty the stack; the output and the parameter values stay.
    Measurement<T>* clear();

    /// Name the place for the result; with null the measurement makes one of its own.
    Measurement<T>* set_output(T* place);

    /// Replace all parameter values. They are checked when the measurement runs.
    Measurement<T>* set_parameter_values(const std::vector<BVariant>& values);

protected:
    Measurement<T>* set_name(const QString& text);                        ///< the name; see get_name()
    Measurement<T>* set_description(const QString& text);                 ///< one line for a person
    Measurement<T>* set_parameters(const QList<IO::Parameter>& declared); ///< declares; the values stay

    QString name;        ///< what get_name() answers in most measurements
    QString symbol;      ///< a short sign for formulas
    QString category;    ///< under which the manager files the measurement
    QString description; ///< one line for a person
    IO::ExpressionType expressionType = IO::ExpressionType::None; ///< the only kind
    IO::InputType inputType = IO::InputType::None;                ///< what it takes
    QList<IO::Parameter> parameters;                              ///< as declared
    std::vector<BVariant> parameterValues;                        ///< the current ones, by position
    QList<T*> stack;                                              ///< the inputs; not owned
    T* output = nullptr; ///< where the result goes; not owned, null for nowhere
    std::shared_ptr<Extension<Measurement<T>>> extension; ///< shared by all copies
};

/// Remembers one T for each address at which a probe has stood; one table for each T in the process.
///
/// What is remembered isn't owned. An entry is never removed while the process runs, though the address of a probe
/// that is gone may come back with another: the next value that isn't null replaces what stands there.
///
/// Threads: may be used from any thread; usable to the very end of the process, though what was remembered is let
///          go of when the clean-ups of the process run.
template <class T>
class ORRERYCOREVARIABLES_EXPORT ProbeTable
{
public:
    ProbeTable() = delete;

    /// Note `value` for `probe`, and return what stands there now. A null `value` asks for what stands there; with
    /// nothing there it makes an entry that holds null.
    ///
    /// Cost: logarithmic in the number of addresses.
    static T* remember(AbstractProbe* probe, T* value);

private:
    struct Entries
    {
        std::mutex mutex;
        std::map<AbstractProbe*, T*> values;
    };

    static Entries& entries();
    static Entries* makeEntries();
    static void release();
};

/// Runs a measurement of class M, which has a member `O* apply(I* input)`, on the first element of its stack.
///
/// Nothing that it points to is owned.
template <class M, class I, class O>
class ORRERYCOREVARIABLES_EXPORT Probe : public AbstractProbe
{
public:
    /// `measured` must outlive the probe.
    explicit Probe(M* measured);
    Probe(const Probe& other);            ///< works on the same measurement, input and output
    Probe& operator=(const Probe& other); ///< works on what `other` works on
    ~Probe() override;

    /// Apply the measurement to `input`; without one to the first element of the stack, which `input` is from
    /// then on; without any to null. Returns `output`. The argument isn't used.
    ///
    /// Errors: what apply() throws passes through, and `output` is what it was.
    Variable* run(void* argument = nullptr) override;

    M* measurement;      ///< what is run; not owned
    I* input = nullptr;  ///< what it was run on; not owned
    O* output = nullptr; ///< what the last run returned; not owned
};

template <class T>
T* ProbeTable<T>::remember(AbstractProbe* probe, T* value)
{
    Entries& table = entries();
    const std::lock_guard<std::mutex> lock(table.mutex);
    T*& entry = table.values[probe];
    if (value)
        entry = value;
    return entry;
}

template <class T>
typename ProbeTable<T>::Entries& ProbeTable<T>::entries()
{
    static Entries* const s_entries = makeEntries();
    return *s_entries;
}

// The table itself is never destroyed: a probe may run in the destructor of a static of the host, which is later.
template <class T>
typename ProbeTable<T>::Entries* ProbeTable<T>::makeEntries()
{
    auto made = std::make_unique<Entries>();
    std::atexit(&ProbeTable<T>::release);
    return made.release();
}

template <class T>
void ProbeTable<T>::release()
{
    Entries& table = entries();
    const std::lock_guard<std::mutex> lock(table.mutex);
    table.values.clear();
}

template <class M, class I, class O>
Probe<M, I, O>::Probe(M* measured)
    : measurement(measured)
{
}

template <class M, class I, class O>
Probe<M, I, O>::Probe(const Probe& other) = default;

template <class M, class I, class O>
Probe<M, I, O>& Probe<M, I, O>::operator=(const Probe& other) = default;

template <class M, class I, class O>
Probe<M, I, O>::~Probe() = default;

template <class M, class I, class O>
Variable* Probe<M, I, O>::run(void* /*argument*/)
{
    if (!input && !measurement->get_stack().isEmpty())
        input = measurement->get_stack().first();
    O* const result = measurement->apply(input);
    output = ProbeTable<O>::remember(this, result);
    measurement = ProbeTable<M>::remember(this, measurement);
    return output;
}

extern template class ORRERYCOREVARIABLES_EXPORT Extension<Measurement<Variable>>;
extern template class ORRERYCOREVARIABLES_EXPORT Measurement<Variable>;
extern template class ORRERYCOREVARIABLES_EXPORT ProbeTable<Measurement<Variable>>;
extern template class ORRERYCOREVARIABLES_EXPORT ProbeTable<Variable>;

} // namespace Orrery
