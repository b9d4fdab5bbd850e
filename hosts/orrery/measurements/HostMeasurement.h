#pragma once

#include "Core/Measurement.h"
#include "units/Units.h"
#include "variables/Variable.h"

#include <memory>
#include <optional>
#include <stdexcept>

namespace Orrery::Host {

/// What a measurement has found.
struct Measured
{
    Brindle::Quay::BVariant data;
    std::optional<Units> units; ///< none where it isn't clear what the result is in
};

/// Give a variable these data, and these units or none. Clients hear of the data.
///
/// Errors: std::runtime_error if the units can't be put into the tree.
void store(Variable& target, const Measured& found);

/// What the measurements of this program have in common: the class `Own` says with `Measured measure(const Variable&)
/// const` what it finds, and fills name, category, description and parameters in its constructor.
template <class Own>
class HostMeasurement : public Measurement<Variable>
{
public:
    QString get_name() override { return name; }
    AbstractProbe* make_probe() override
    {
        return new Probe<Own, Variable, Variable>(static_cast<Own*>(this));
    }
    Measurement<Variable>* clone() const override { return new Own(static_cast<const Own&>(*this)); }

    /// What the probe calls: store what is found in the output, or in a new variable that is the caller's.
    ///
    /// Errors: std::invalid_argument for a null input, and what measure() throws; the output is then untouched.
    Variable* apply(Variable* input)
    {
        if (!input)
            throw std::invalid_argument("there is nothing to measure");
        const Measured found = static_cast<const Own*>(this)->measure(*input);
        std::unique_ptr<Variable> made;
        if (!output)
            made = std::make_unique<Variable>();
        Variable* const target = made ? made.get() : output;
        store(*target, found);
        static_cast<void>(made.release());
        return target;
    }

private:
    friend Own;
    HostMeasurement() { inputType = IO::InputType::Variable; }
};

} // namespace Orrery::Host
