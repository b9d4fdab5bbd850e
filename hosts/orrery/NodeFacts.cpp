#include "hosts/orrery/NodeFacts.h"

#include "foundations/property/SimpleProperty.h"
#include "hosts/orrery/ElementText.h"
#include "hosts/orrery/TreeAccess.h"
#include "variables/FunctionVarStrategy.h"

#include <QList>

#include <algorithm>
#include <exception>
#include <utility>

namespace Orrery::Host {

using Brindle::Quay::BVariant;
using Brindle::Quay::DataOrdering;

namespace {

bool isDigit(QChar c)
{
    return c >= QLatin1Char('0') && c <= QLatin1Char('9');
}

// The digits at `*at`, without zeros in front.
QStringRef takeNumber(const QString& text, int* at)
{
    while (*at + 1 < text.size() && text[*at] == QLatin1Char('0') && isDigit(text[*at + 1]))
        ++*at;
    const int begin = *at;
    while (*at < text.size() && isDigit(text[*at]))
        ++*at;
    return text.midRef(begin, *at - begin);
}

// "dc2" comes before "dc10".
bool comesBefore(const QString& a, const QString& b)
{
    int i = 0;
    int k = 0;
    while (i < a.size() && k < b.size()) {
        if (isDigit(a[i]) && isDigit(b[k])) {
            const QStringRef x = takeNumber(a, &i);
            const QStringRef y = takeNumber(b, &k);
            if (x.size() != y.size())
                return x.size() < y.size();
            if (x != y)
                return x < y;
        } else if (a[i] != b[k]) {
            return a[i] < b[k];
        } else {
            ++i;
            ++k;
        }
    }
    const int leftA = a.size() - i;
    const int leftB = b.size() - k;
    return leftA != leftB ? leftA < leftB : a < b;
}

// What another process computed, and this one would only compute again.
const SimpleProperty* storedResult(const Variable& variable)
{
    if (!dynamic_cast<FunctionVarStrategy*>(variable.GetStrategyPtr().lock().get()))
        return nullptr;
    return dynamic_cast<const SimpleProperty*>(variable.GetPropertyConstPtr(QStringLiteral("Data")));
}

// Of computed values the first element tells the type.
ValueFacts factsOfComputed(const Variable& variable)
{
    ValueFacts facts;
    std::vector<std::uint64_t> shape;
    if (variable.GetElementShape(&shape) < 0)
        return facts;
    shape.insert(shape.begin(), variable.GetMaxIndepOffset());
    facts.count = 1;
    for (const std::uint64_t size : shape)
        *facts.count *= size;
    const bool hasFirst = shape.front() > 0;
    facts.shape = std::move(shape);
    BVariant first;
    try {
        if (hasFirst && variable.GetValueAt(&first, 0) >= 0)
            facts.elements = elementTypeName(first.getWellKnownType());
    } catch (const std::exception&) {
        facts.isUnreadable = true;
    }
    return facts;
}

void visitChildren(PropertyObject& folder, bool showsAll, std::size_t depth, const NodeVisitor& visitor);

void visit(AbstractProperty& node, bool showsAll, std::size_t depth, const NodeVisitor& visitor)
{
    visitor(node, depth);
    if (node.IsPropertyObject() && (!node.IsVariable() || showsAll))
        visitChildren(static_cast<PropertyObject&>(node), showsAll, depth + 1, visitor);
}

void visitChildren(PropertyObject& folder, bool showsAll, std::size_t depth, const NodeVisitor& visitor)
{
    QList<AbstractProperty*> children;
    folder.GetPropertyList(&children);
    std::sort(children.begin(), children.end(), [](const AbstractProperty* a, const AbstractProperty* b) {
        return comesBefore(a->GetName(), b->GetName());
    });
    for (AbstractProperty* const child : children) {
        if (showsAll || (child->IsPropertyObject() && !child->IsHidden()))
            visit(*child, showsAll, depth, visitor);
    }
}

} // namespace

ValueFacts factsOf(const BVariant& value)
{
    ValueFacts facts;
    facts.shape = dimensionsOf(value);
    facts.elements = elementTypeName(value.getWellKnownType());
    facts.count = value.elementCount();
    if (value.getDimensions().size() > 1)
        facts.ordering = value.getDataOrdering() == DataOrdering::RowMajor ? "row-major" : "column-major";
    if (value.elementCount() != 1 || facts.elements == "run-time")
        return facts;
    try {
        static_cast<void>(ElementText(value));
        facts.single = value;
    } catch (const std::exception&) {
        facts.isUnreadable = true;
    }
    return facts;
}

ValueFacts factsOf(const Variable& variable)
{
    try {
        if (holdsStoredData(variable))
            return factsOf(variable.GetData());
        if (const SimpleProperty* const result = storedResult(variable))
            return factsOf(result->GetValue());
        return factsOfComputed(variable);
    } catch (const std::exception&) {
        ValueFacts facts;
        facts.isUnreadable = true;
        return facts;
    }
}

void visitListed(AbstractProperty& node, bool showsAll, const NodeVisitor& visitor)
{
    if (node.IsPropertyObject() && (!node.IsVariable() || showsAll))
        visitChildren(static_cast<PropertyObject&>(node), showsAll, 0, visitor);
    else
        visit(node, showsAll, 0, visitor);
}

} // namespace Orrery::Host
