#include "hosts/orrery/TreeJson.h"

#include "foundations/property/PropertyReference.h"
#include "foundations/property/SimpleProperty.h"
#include "hosts/orrery/JsonElements.h"
#include "hosts/orrery/NodeFacts.h"
#include "hosts/orrery/SweepAccess.h"
#include "hosts/orrery/UnitText.h"
#include "variables/Variable.h"

#include <QList>

namespace Orrery::Host {

namespace {

const char* kindOf(const AbstractProperty& node)
{
    if (node.IsVariable())
        return "variable";
    if (node.IsPropertyReference())
        return "reference";
    return node.IsPropertyObject() ? "folder" : "value";
}

void writeFlags(JsonWriter& json, const AbstractProperty& node)
{
    json.key("flags");
    json.openInline('[');
    if (node.IsReadOnly())
        json.string("read-only");
    if (node.IsHidden())
        json.string("hidden");
    if (node.IsSerializable())
        json.string("saved");
    json.close();
}

// The path of a node, or null where nothing is.
void writePath(JsonWriter& json, const AbstractProperty* node)
{
    if (node)
        json.string(node->GetFullPath());
    else
        json.null();
}

void writeValues(JsonWriter& json, const ValueFacts& facts)
{
    if (facts.shape) {
        json.key("shape");
        writeShape(json, *facts.shape);
    }
    if (!facts.elements.empty()) {
        json.key("elements");
        json.string(facts.elements);
    }
    if (!facts.ordering.empty()) {
        json.key("ordering");
        json.string(facts.ordering);
    }
    if (facts.count) {
        json.key("count");
        json.integer(*facts.count);
    }
    if (facts.isUnreadable) {
        json.key("unreadable");
        json.boolean(true);
    } else if (!facts.single.isEmpty()) {
        json.key("value");
        JsonElements(facts.single).write(json, 0);
    }
}

void writeVariable(JsonWriter& json, const Variable& variable)
{
    json.key("units");
    writeUnits(json, unitsOf(variable));
    json.key("axes");
    json.openInline('[');
    const int count = variable.GetIndepCount();
    for (int i = 0; i < count; ++i) {
        Variable* axis = nullptr;
        writePath(json, variable.GetIndepVariable(&axis, i) < 0 ? nullptr : axis);
    }
    json.close();
    writeValues(json, factsOf(variable));
}

void writeFolder(JsonWriter& json, const PropertyObject& folder)
{
    json.key("children");
    json.integer(static_cast<std::uint64_t>(folder.GetPropertyCount()));
    const auto* const sweep = dynamic_cast<const ParameterizedResultData*>(&folder);
    if (!sweep)
        return;
    QList<AbstractProperty*> members;
    sweep->GetPrefixedChildrenProperties(&members, QString());
    json.key("members");
    json.integer(static_cast<std::uint64_t>(members.size()));
    json.key("parameter");
    writePath(json, parameterOf(*sweep));
}

// Where a reference leads, and whether there is something.
void writeReference(JsonWriter& json, const PropertyReference& reference)
{
    json.key("target");
    json.openInline('{');
    if (const QString file = reference.ReferenceFilePath(); !file.isEmpty()) {
        json.key("file");
        json.string(file);
        json.key("file_type");
        json.string(reference.ReferenceFileType());
    }
    json.key("path");
    json.string(reference.ReferencePath());
    json.key("resolved");
    writePath(json, reference.Resolve());
    json.close();
}

void writeNode(JsonWriter& json, AbstractProperty& node)
{
    json.openInline('{');
    json.key("path");
    json.string(node.GetFullPath());
    json.key("name");
    json.string(node.GetName());
    json.key("kind");
    json.string(kindOf(node));
    json.key("type");
    json.string(node.PropertyObjType());
    writeFlags(json, node);
    if (node.IsVariable()) {
        writeVariable(json, static_cast<const Variable&>(node));
    } else if (node.IsPropertyObject()) {
        writeFolder(json, static_cast<const PropertyObject&>(node));
    } else if (node.IsSimpleProperty()) {
        const auto& value = static_cast<const SimpleProperty&>(node);
        json.key("cell_array");
        json.boolean(value.GetValueIsCellArray() != IsCellArrayFalse);
        writeValues(json, factsOf(value.GetValue()));
    } else if (node.IsPropertyReference()) {
        writeReference(json, static_cast<const PropertyReference&>(node));
    }
    json.close();
}

} // namespace

void printJsonListing(Output& out, const std::string& file, AbstractProperty& node, bool showsAll)
{
    JsonWriter json(out);
    json.open('{');
    json.key("file");
    json.string(file);
    json.key("nodes");
    json.open('[');
    visitListed(node, showsAll, [&](AbstractProperty& each, std::size_t) { writeNode(json, each); });
    json.close();
    json.close();
}

} // namespace Orrery::Host
