#include "hosts/orrery/TreeComparison.h"

#include "foundations/property/PropertyReference.h"
#include "foundations/property/SimpleProperty.h"
#include "hosts/orrery/Failure.h"
#include "hosts/orrery/PlainText.h"
#include "hosts/orrery/TreeAccess.h"
#include "hosts/orrery/UnitText.h"
#include "results/Result.h"

#include <QList>

#include <algorithm>
#include <utility>
#include <vector>

namespace Orrery::Host {

namespace {

using Nodes = std::vector<AbstractProperty*>;

enum class Kind
{
    Folder,
    Value,
    Reference,
};

Kind kindOf(const AbstractProperty& node)
{
    if (node.IsPropertyReference())
        return Kind::Reference;
    return node.IsSimpleProperty() ? Kind::Value : Kind::Folder;
}

const char* kindText(const AbstractProperty& node)
{
    switch (kindOf(node)) {
    case Kind::Reference:
        return "reference";
    case Kind::Value:
        return "value";
    case Kind::Folder:
        break;
    }
    return node.IsVariable() ? "variable" : "folder";
}

std::string typeText(const AbstractProperty& node)
{
    return printable(node.PropertyObjType().toStdString());
}

// "-hs", with the number behind it for bits that have no letter.
std::string flagsText(const AbstractProperty& node)
{
    constexpr unsigned known = PropertyFlagReadOnly | PropertyFlagHidden | PropertyFlagSerializable;
    std::string text = "---";
    text[0] = node.IsReadOnly() ? 'r' : '-';
    text[1] = node.IsHidden() ? 'h' : '-';
    text[2] = node.IsSerializable() ? 's' : '-';
    if (const unsigned others = node.GetPropertyFlags() & ~known; others != 0)
        text += '+' + std::to_string(others);
    return text;
}

std::string targetText(const PropertyReference& reference)
{
    const QString path = reference.ReferencePath();
    if (path.isEmpty())
        return "nothing";
    const QString file = reference.ReferenceFilePath();
    return printable((file.isEmpty() ? path : file + QLatin1Char(':') + path).toStdString());
}

/// Which nodes are in both folders, and which in one of them; each in the order of names.
struct Pairing
{
    std::vector<std::pair<AbstractProperty*, AbstractProperty*>> both;
    Nodes onlyFirst;
    Nodes onlySecond;
};

Pairing pairByName(const PropertyObject& first, const PropertyObject& second)
{
    QList<AbstractProperty*> a;
    QList<AbstractProperty*> b;
    first.GetPropertyList(&a);
    second.GetPropertyList(&b);
    Pairing pairing;
    int i = 0;
    int k = 0;
    while (i < a.size() || k < b.size()) {
        const bool isEnd = i == a.size() || k == b.size();
        if (!isEnd && a[i]->GetName() == b[k]->GetName())
            pairing.both.emplace_back(a[i++], b[k++]);
        else if (k == b.size() || (!isEnd && a[i]->GetName() < b[k]->GetName()))
            pairing.onlyFirst.push_back(a[i++]);
        else
            pairing.onlySecond.push_back(b[k++]);
    }
    return pairing;
}

class Comparison
{
public:
    Comparison(const ComparedTree& first, const ComparedTree& second, const ComparisonOptions& options,
               const DifferenceSink& sink)
        : m_first(first)
        , m_second(second)
        , m_options(options)
        , m_sink(sink)
    {
    }

    void compare(AbstractProperty& a, AbstractProperty& b);

private:
    void compareNodes(AbstractProperty& a, AbstractProperty& b);
    void compareFolders(PropertyObject& a, PropertyObject& b);
    void compareUnits(const AbstractProperty& a, const AbstractProperty& b);
    void compareValues(const SimpleProperty& a, const SimpleProperty& b);
    void compareReferences(const PropertyReference& a, const PropertyReference& b);
    std::string nameText(const AbstractProperty& second) const;
    void tellRest(Nodes onlyFirst, Nodes onlySecond);
    AbstractProperty* takeSame(AbstractProperty& node, Nodes* candidates);
    bool areSame(AbstractProperty& a, AbstractProperty& b);
    void tell(const AbstractProperty& node, const std::string& what,
              Difference::Kind kind = Difference::Changed);
    bool isDecided() const { return m_isSilent && m_hasDifference; }

    const ComparedTree& m_first;
    const ComparedTree& m_second;
    const ComparisonOptions& m_options;
    const DifferenceSink& m_sink;
    bool m_isSilent = false; // only whether there is a difference is asked for
    bool m_hasDifference = false;
    int m_trials = 0; // of names, in one folder
};

void Comparison::tell(const AbstractProperty& node, const std::string& what, Difference::Kind kind)
{
    m_hasDifference = true;
    if (!m_isSilent)
        m_sink({kind, printable(node.GetFullPath().toStdString()), what});
}

void Comparison::compare(AbstractProperty& a, AbstractProperty& b)
{
    if (kindOf(a) != kindOf(b) || a.IsVariable() != b.IsVariable()) {
        tell(a, std::string("kind ") + kindText(a) + " and " + kindText(b));
        return;
    }
    if (!m_options.ignoresTypes && a.PropertyObjType() != b.PropertyObjType())
        tell(a, "type " + typeText(a) + " and " + typeText(b));
    if (a.GetPropertyFlags() != b.GetPropertyFlags())
        tell(a, "flags " + flagsText(a) + " and " + flagsText(b));
    compareNodes(a, b);
}

void Comparison::compareNodes(AbstractProperty& a, AbstractProperty& b)
{
    if (isDecided())
        return;
    switch (kindOf(a)) {
    case Kind::Reference:
        return compareReferences(static_cast<PropertyReference&>(a), static_cast<PropertyReference&>(b));
    case Kind::Value:
        return compareValues(static_cast<SimpleProperty&>(a), static_cast<SimpleProperty&>(b));
    case Kind::Folder:
        break;
    }
    compareUnits(a, b);
    compareFolders(static_cast<PropertyObject&>(a), static_cast<PropertyObject&>(b));
}

void Comparison::compareReferences(const PropertyReference& a, const PropertyReference& b)
{
    const std::string first = targetText(a);
    const std::string second = targetText(b);
    if (first != second)
        tell(a, "refers to " + first + " and " + second);
    else if (a.ReferencePath() != b.ReferencePath() || a.ReferenceFilePath() != b.ReferenceFilePath())
        tell(a, "refers to " + first + " by texts that print alike");
    if (a.ReferenceFileType() != b.ReferenceFileType())
        tell(a, "refers to a file of the type " + inQuotes(a.ReferenceFileType().toStdString()) + " and " +
                    inQuotes(b.ReferenceFileType().toStdString()));
}

void Comparison::compareValues(const SimpleProperty& a, const SimpleProperty& b)
{
    if (a.GetValueIsCellArray() != b.GetValueIsCellArray()) {
        const bool isFirst = a.GetValueIsCellArray() != IsCellArrayFalse;
        tell(a, isFirst ? "cell array and ordinary array" : "ordinary array and cell array");
    }
    bool readsSecond = false;
    try {
        for (const std::string& what :
             differencesOf(a.GetValueRef(), b.GetValueRef(), m_options, &readsSecond))
            tell(a, what);
    } catch (const std::runtime_error& error) {
        throw Failure(fileLine((readsSecond ? m_second : m_first).name, QString::fromUtf8(error.what())));
    }
}

// What the children of units say to a person; the children themselves are compared with the rest.
void Comparison::compareUnits(const AbstractProperty& a, const AbstractProperty& b)
{
    const auto* const first = dynamic_cast<const Units*>(&a);
    const auto* const second = dynamic_cast<const Units*>(&b);
    if (first && second && *first != *second)
        tell(a, "units " + unitsLabel(*first) + " and " + unitsLabel(*second));
}

void Comparison::compareFolders(PropertyObject& a, PropertyObject& b)
{
    Pairing pairing = pairByName(a, b);
    if (!pairing.onlyFirst.empty() || !pairing.onlySecond.empty())
        m_hasDifference = true;
    for (const auto& [first, second] : pairing.both) {
        if (isDecided())
            return;
        compare(*first, *second);
    }
    if (!m_isSilent)
        tellRest(std::move(pairing.onlyFirst), std::move(pairing.onlySecond));
}

std::string Comparison::nameText(const AbstractProperty& second) const
{
    return "is named " + inQuotes(second.GetName().toStdString()) + " in " + m_second.name;
}

bool isResult(const AbstractProperty& node)
{
    return dynamic_cast<const Result*>(&node) != nullptr;
}

void Comparison::tellRest(Nodes onlyFirst, Nodes onlySecond)
{
    // Results are named after the files that they are from; that isn't what whoever compares two wants to know.
    if (onlyFirst.size() == 1 && onlySecond.size() == 1 && isResult(*onlyFirst.front()) &&
        isResult(*onlySecond.front())) {
        tell(*onlyFirst.front(), nameText(*onlySecond.front()));
        return compare(*onlyFirst.front(), *onlySecond.front());
    }
    m_trials = 0;
    for (AbstractProperty* const node : onlyFirst) {
        if (const AbstractProperty* const same = takeSame(*node, &onlySecond))
            tell(*node, nameText(*same));
        else
            tell(*node, "only in " + m_first.name, Difference::OnlyInFirst);
    }
    for (const AbstractProperty* const node : onlySecond)
        tell(*node, "only in " + m_second.name, Difference::OnlyInSecond);
}

// Each trial may read as much as the nodes hold, so folders with nothing in common are given up.
AbstractProperty* Comparison::takeSame(AbstractProperty& node, Nodes* candidates)
{
    constexpr int mostTrials = 1000;
    for (std::size_t i = 0; i < candidates->size() && m_trials < mostTrials; ++i) {
        ++m_trials;
        AbstractProperty* const candidate = (*candidates)[i];
        if (areSame(node, *candidate)) {
            candidates->erase(candidates->begin() + static_cast<std::ptrdiff_t>(i));
            return candidate;
        }
    }
    return nullptr;
}

bool Comparison::areSame(AbstractProperty& a, AbstractProperty& b)
{
    m_isSilent = true;
    m_hasDifference = false;
    compare(a, b);
    m_isSilent = false;
    return !std::exchange(m_hasDifference, true);
}

} // namespace

void compareTrees(const ComparedTree& first, const ComparedTree& second, const ComparisonOptions& options,
                  const DifferenceSink& sink)
{
    Comparison(first, second, options, sink).compare(*first.root, *second.root);
}

} // namespace Orrery::Host
