#include "Core/Measurement.h"

#include "variables/Variable.h"

namespace Orrery {

AbstractProbe::~AbstractProbe() = default;

template <class T>
Extension<T>::Extension() = default;

template <class T>
Extension<T>::Extension(const Extension& other) = default;

template <class T>
Extension<T>& Extension<T>::operator=(const Extension& other) = default;

template <class T>
Extension<T>::~Extension() = default;

template <class T>
Measurement<T>::Measurement()
    : extension(std::make_shared<Extension<Measurement<T>>>())
{
}

template <class T>
Measurement<T>::Measurement(const Measurement& other) = default;

template <class T>
Measurement<T>& Measurement<T>::operator=(const Measurement& other) = default;

template <class T>
Measurement<T>::~Measurement() = default;

template <class T>
bool Measurement<T>::is_valid(const T* /*input*/, QString& /*why*/)
{
    return true;
}

template <class T>
QString Measurement<T>::get_category() const
{
    return category;
}

template <class T>
QString Measurement<T>::get_description() const
{
    return description;
}

template <class T>
QString Measurement<T>::get_symbol() const
{
    return symbol;
}

template <class T>
IO::ExpressionType Measurement<T>::get_expression_type() const
{
    return expressionType;
}

template <class T>
IO::InputType Measurement<T>::get_input_type() const
{
    return inputType;
}

template <class T>
std::shared_ptr<Extension<Measurement<T>>> Measurement<T>::get_extension() const
{
    return extension;
}

template <class T>
QList<IO::Parameter> Measurement<T>::get_parameters() const
{
    return parameters;
}

template <class T>
std::vector<BVariant> Measurement<T>::get_parameter_values() const
{
    return parameterValues;
}

template <class T>
const QList<T*>& Measurement<T>::get_stack() const
{
    return stack;
}

template <class T>
Measurement<T>* Measurement<T>::push(T* input)
{
    stack.append(input);
    return this;
}

template <class T>
Measurement<T>* Measurement<T>::clear()
{
    stack.clear();
    return this;
}

template <class T>
Measurement<T>* Measurement<T>::set_output(T* place)
{
    output = place;
    return this;
}

template <class T>
Measurement<T>* Measurement<T>::set_parameter_values(const std::vector<BVariant>& values)
{
    parameterValues = values;
    return this;
}

template <class T>
Measurement<T>* Measurement<T>::set_name(const QString& text)
{
    name = text;
    return this;
}

template <class T>
Measurement<T>* Measurement<T>::set_description(const QString& text)
{
    description = text;
    return this;
}

template <class T>
Measurement<T>* Measurement<T>::set_parameters(const QList<IO::Parameter>& declared)
{
    parameters = declared;
    return this;
}

template class Extension<Measurement<Variable>>;
template class Measurement<Variable>;
template class ProbeTable<Measurement<Variable>>;
template class ProbeTable<Variable>;

} // namespace Orrery
