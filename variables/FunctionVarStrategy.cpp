#include "variables/FunctionVarStrategy.h"

#include "Core/FunctionProperty.h"
#include "Core/Measurement.h"
#include "foundations/property/PropertyHandle.h"
#include "foundations/property/PropertyReference.h"
#include "foundations/property/SimpleProperty.h"
#include "foundations/variant/VariantOperations.h"
#include "tracking/Notifier.h"
#include "tracking/ObservablePropertyReference.h"
#include "variables/GetAt_p.h"
#include "variables/NodeSnapshot_p.h"
#include "variables/OffsetCount_p.h"
#include "variables/ReadInProgress_p.h"
#include "variables/Variable.h"

#include <QDebug>

#include <algorithm>
#include <cstdlib>
#include <cxxabi.h>
#include <exception>
#include <set>
#include <stdexcept>
#include <typeinfo>
#include <utility>

namespace Orrery {
namespace {

/// The child of that name if it is a folder.
PropertyObject* folderOf(const Variable& owner, const QString& name)
{
    auto* folder = const_cast<Variable&>(owner).GetPtr<PropertyObject>(name);
    return folder && folder->IsPropertyObject() ? folder : nullptr;
}

/// The Variable that a child of the folder of arguments stands for; null for none.
Variable* resolveArgument(AbstractProperty& child)
{
    if (child.IsPropertyReference()) {
        const auto* reference = dynamic_cast<const PropertyReference*>(&child);
        return reference ? dynamic_cast<Variable*>(reference->Resolve()) : nullptr;
    }
    return child.IsVariable() ? dynamic_cast<Variable*>(&child) : nullptr;
}

bool passOnRemoval(const Variable& argument, const Variable& owner)
{
    return QObject::connect(argument.getNotifier(), SIGNAL(Removed()), owner.getNotifier(), SLOT(Remove()),
                            Qt::UniqueConnection);
}

/// Binds a node to sources on which it may depend already, and knows whether any of them was new to it.
class Linker
{
public:
    explicit Linker(std::shared_ptr<AbstractDirtyTracker> node)
        : m_node(std::move(node))
        , m_sources(m_node->getSources().nodes())
    {
    }

    void bind(const std::shared_ptr<AbstractDirtyTracker>& source)
    {
        if (!source || m_sources.count(source) != 0)
            return;
        AbstractDirtyTracker::bind(source, m_node);
        m_foundNew = true;
    }

    bool foundNew() const { return m_foundNew; }

private:
    std::shared_ptr<AbstractDirtyTracker> m_node;
    AbstractDirtyTracker::Nodes::WeakSet m_sources;
    bool m_foundNew = false;
};

void markDirty(const Variable& owner)
{
    if (owner.getDirtyTracker())
        owner.getDirtyTracker()->markDirty();
}

QString typeNameOf(const std::exception& error)
{
    const char* mangled = typeid(error).name();
    int status = 0;
    const std::unique_ptr<char, void (*)(void*)> name(abi::__cxa_demangle(mangled, nullptr, nullptr, &status),
                                                      std::free);
    return QString::fromUtf8(name ? name.get() : mangled);
}

void logFailure(const std::exception& error)
{
    qDebug().noquote().nospace() << "Error in "
                                 << "Orrery::FunctionVarStrategy::Compute"
                                 << ", " << error.what() << "\n"
                                 << typeNameOf(error);
}

/// Move the children of what a probe has returned in place of the owner. What the owner can't take stays there.
void moveResult(Variable& from, const PropertyHandle& owner)
{
    const PropertyHandle source(&from);
    QList<AbstractProperty*> children;
    from.GetPropertyList(&children);
    QStringList names;
    for (const AbstractProperty* child : qAsConst(children)) {
        if (child)
            names.append(child->GetName());
    }
    for (const QString& name : qAsConst(names)) {
        // Handlers of what happens here may destroy either.
        if (!owner.Get() || !source.Get())
            return;
        const PropertyHandle child(from.TakeProperty(name));
        if (child.Get() && owner.Get() &&
            static_cast<Variable*>(owner.Get())->InsertOrReplaceProperty(child.Get()) >= 0)
            continue;
        if (child.Get() && !child.Get()->GetParent() &&
            (!source.Get() || from.InsertProperty(child.Get()) < 0))
            delete child.Get();
    }
}

/// The stack of one run. What an argument's update calls may destroy other arguments.
class ArgumentStack
{
public:
    void add(Variable& argument) { m_arguments.emplace_back(&argument); }

    bool isWhole() const
    {
        return std::none_of(m_arguments.begin(), m_arguments.end(),
                            [](const PropertyHandle& argument) { return argument.IsExpired(); });
    }

private:
    std::vector<PropertyHandle> m_arguments;
};

[[noreturn]] void failInvalidArgument()
{
    throw std::logic_error("invalid argument in list; operation is undefined!");
}

/// Its tracker is told first and its strategy asked then, as a read of the Variable would do it the other way
/// round: an argument that computes finds itself updating, and gives what it has stored.
void bringUpToDate(Variable& argument)
{
    const std::shared_ptr<Variable::Tracker> tracker = argument.getDirtyTracker();
    if (!tracker)
        return;
    tracker->updateIfDirty([&argument] {
        if (const auto strategy = argument.GetStrategyPtr().lock())
            strategy->GetData(nullptr);
    });
}

void pushArguments(const Variable& owner, const QString& folderName, Measurement<Variable>& measurement)
{
    const PropertyObject* folder = folderOf(owner, folderName);
    if (!folder)
        return;
    QList<AbstractProperty*> children;
    folder->GetPrefixedChildrenProperties(&children, QString());
    const PropertyHandle self(&owner);
    ArgumentStack stack;
    for (const PropertyHandle& child : snapshotOf(children)) {
        Variable* argument = child.Get() ? resolveArgument(*child.Get()) : nullptr;
        if (self.IsExpired())
            return; // with all its arguments, by what one of them has told, or by what has looked for it
        if (!argument)
            failInvalidArgument();
        measurement.push(argument);
        stack.add(*argument);
        bringUpToDate(*argument);
    }
    if (!self.IsExpired() && !stack.isWhole())
        failInvalidArgument();
}

/// The clone that one run works on. Nobody destroys it once it has made a probe: the table of probes keeps it, and
/// loses it when an address comes again. On its own so that a leak checker can tell these from other losses.
[[gnu::noinline]] std::unique_ptr<Measurement<Variable>>
makeWorkingClone(const Measurement<Variable>& described)
{
    return std::unique_ptr<Measurement<Variable>>(described.clone());
}

thread_local int s_computations = 0;             // one within the other, on this thread
thread_local std::size_t s_provisionalCount = 0; // of the set: told without making it

using TrackerSet = std::set<std::shared_ptr<Variable::Tracker>>;

TrackerSet& provisionalTrackers()
{
    static thread_local TrackerSet trackers;
    return trackers;
}

/// A computation, as long as it lives. Its result may lack what lay too deep for it; then it counts as up to date until
/// the outermost computation ends, and as dirty from then on. Each variable of a chain reads the one below more than
/// once: if it computed each time, the work would double at every level.
class Computation
{
public:
    Computation() { ++s_computations; }
    ~Computation()
    {
        if (isOutermost())
            endProvisional();
        --s_computations;
    }
    Computation(const Computation&) = delete;
    Computation& operator=(const Computation&) = delete;

    static bool isOutermost() { return s_computations == 1; }
    static bool hasProvisional() { return s_provisionalCount != 0; }

    static bool isProvisional(const std::shared_ptr<Variable::Tracker>& tracker)
    {
        return hasProvisional() && provisionalTrackers().count(tracker) != 0;
    }

    static void keepProvisional(const std::shared_ptr<Variable::Tracker>& tracker)
    {
        provisionalTrackers().insert(tracker);
        s_provisionalCount = provisionalTrackers().size();
    }

    static void endProvisional()
    {
        if (!hasProvisional())
            return;
        s_provisionalCount = 0;
        for (const std::shared_ptr<Variable::Tracker>& tracker : std::exchange(provisionalTrackers(), {}))
            tracker->markDirty();
    }
};

} // namespace

FunctionVarStrategy::FunctionVarStrategy(Variable* owner)
    : IVariableStrategy(owner)
{
    Init();
}

FunctionVarStrategy::~FunctionVarStrategy() = default;

void FunctionVarStrategy::Init()
{
    markDirty(*backRef());
}

const QString& FunctionVarStrategy::StaticType()
{
    static const QString type = QStringLiteral("FunctionStrategy");
    return type;
}

QString FunctionVarStrategy::GetType() const
{
    return StaticType();
}

const QString& FunctionVarStrategy::sArguments()
{
    static const QString key = QStringLiteral("Arguments");
    return key;
}

const QString& FunctionVarStrategy::sFunction()
{
    static const QString key = QStringLiteral("Function");
    return key;
}

const QString& FunctionVarStrategy::sData()
{
    static const QString key = QStringLiteral("Data");
    return key;
}

std::shared_ptr<IVariableStrategy> FunctionVarStrategy::Copy(Variable* owner) const
{
    return std::make_shared<FunctionVarStrategy>(owner);
}

ERESULT FunctionVarStrategy::AddArgumentRef(const Variable* argument)
{
    const std::lock_guard<std::recursive_mutex> lock(mutex());
    return AppendArgument(*backRef(), const_cast<Variable*>(argument));
}

ERESULT FunctionVarStrategy::AppendArgument(Variable& owner, Variable* argument)
{
    if (!argument)
        return ER_INVALID_ARGUMENT;
    // The insertions below tell handlers of the host, which may destroy what takes part.
    const PropertyHandle self(&owner);
    const PropertyHandle target(argument);
    PropertyObject* folder = folderOf(owner, sArguments());
    if (!folder) {
        auto made = std::make_unique<PropertyObject>(sArguments());
        const ERESULT inserted = owner.InsertOrReplaceProperty(made.get());
        if (inserted < 0)
            return inserted;
        static_cast<void>(made.release());
        folder = self.IsExpired() ? nullptr : folderOf(owner, sArguments());
        if (!folder || target.IsExpired())
            return ER_FAILED;
    }
    QString key;
    const ERESULT numbered = folder->nextNumberedChildName(&key);
    if (numbered < 0)
        return numbered;
    const ERESULT inserted = insertVariableReference(*folder, key, argument);
    if (inserted < 0)
        return inserted;
    if (self.IsExpired() || target.IsExpired())
        return ER_FAILED;
    if (argument->getNotifier() && owner.getNotifier() && !passOnRemoval(*argument, owner)) {
        qWarning().noquote().nospace() << "duplicate connection requested "
                                       << "From: " << argument->GetName() << " To: " << owner.GetName();
    }
    AbstractDirtyTracker::bind(argument->getDirtyTracker(), owner.getDirtyTracker());
    markDirty(owner);
    return inserted;
}

void FunctionVarStrategy::DeleteArguments()
{
    const std::lock_guard<std::recursive_mutex> lock(mutex());
    ClearArguments(*backRef());
}

void FunctionVarStrategy::ClearArguments(Variable& owner)
{
    if (PropertyObject* folder = folderOf(owner, sArguments()))
        folder->DeleteProperties();
}

ERESULT FunctionVarStrategy::GetArguments(QList<AbstractProperty*>* list) const
{
    return ListArguments(*backRef(), list);
}

ERESULT FunctionVarStrategy::ListArguments(const Variable& owner, QList<AbstractProperty*>* list)
{
    if (!list)
        return ER_INVALID_ARGUMENT;
    list->clear();
    const PropertyObject* folder = folderOf(owner, sArguments());
    if (!folder)
        return ER_NOT_FOUND;
    folder->GetPrefixedChildrenProperties(list, QString());
    return ER_SUCCESS;
}

ERESULT FunctionVarStrategy::SetFunction(Function* function)
{
    const std::lock_guard<std::recursive_mutex> lock(mutex());
    return ReplaceFunction(*backRef(), function);
}

ERESULT FunctionVarStrategy::ReplaceFunction(Variable& owner, Function* function)
{
    if (!function)
        return ER_INVALID_ARGUMENT;
    const std::shared_ptr<AbstractDirtyTracker> tracker = function->getDirtyTracker();
    const std::shared_ptr<Variable::Tracker> observer = owner.getDirtyTracker();
    const PropertyHandle self(&owner);
    // A child of the owner under another name couldn't take the name while the present Function has it.
    if (function->GetParent() == &owner && function->GetName() != sFunction() &&
        !owner.TakeProperty(function->GetName()))
        return ER_FAILED;
    function->SetName(sFunction());
    if (self.IsExpired())
        return ER_FAILED;
    if (const Function* former = FunctionOf(owner))
        AbstractDirtyTracker::drop(former->getDirtyTracker(), observer);
    const ERESULT inserted = owner.InsertOrReplaceProperty(function);
    AbstractDirtyTracker::bind(tracker, observer);
    if (observer)
        observer->markDirty();
    return inserted;
}

Function* FunctionVarStrategy::GetFunction() const
{
    return FunctionOf(*backRef());
}

Function* FunctionVarStrategy::FunctionOf(const Variable& owner)
{
    return const_cast<Variable&>(owner).GetPtr<Function>(sFunction());
}

ERESULT FunctionVarStrategy::Relink()
{
    const std::lock_guard<std::recursive_mutex> lock(mutex());
    const Variable& owner = *backRef();
    if (!owner.getDirtyTracker())
        return ER_FAILED;
    ERESULT result = ER_SUCCESS;
    Linker linker(owner.getDirtyTracker());
    QList<AbstractProperty*> children;
    ListArguments(owner, &children);
    const PropertyHandle self(&owner);
    for (const PropertyHandle& child : snapshotOf(children)) {
        // To resolve a reference may load a file, and run code of the host.
        const Variable* argument = child.Get() ? resolveArgument(*child.Get()) : nullptr;
        if (self.IsExpired())
            return ER_FAILED;
        if (!argument) {
            result = ER_NOT_FOUND;
            continue;
        }
        if (argument->getNotifier() && owner.getNotifier())
            passOnRemoval(*argument, owner);
        linker.bind(argument->getDirtyTracker());
    }
    if (const Function* function = GetFunction())
        linker.bind(function->getDirtyTracker());
    if (linker.foundNew())
        markDirty(owner);
    return result;
}

BVariant FunctionVarStrategy::GetData(IsCellArray* flag) const
{
    const SimpleProperty* const stored = readDataProperty();
    if (flag)
        *flag = stored ? stored->GetValueIsCellArray() : IsCellArrayFalse;
    return stored ? stored->GetValue() : BVariant();
}

const SimpleProperty* FunctionVarStrategy::readDataProperty() const
{
    const Variable& owner = *backRef();
    const std::shared_ptr<Variable::Tracker>& tracker = owner.getDirtyTracker();
    if (tracker && tracker->isDirty() && !computeIfDirty())
        return nullptr;
    if (Computation::isProvisional(owner.getDirtyTracker()))
        ReadInProgress::noteTooDeep();
    const auto* stored = dynamic_cast<const SimpleProperty*>(owner.GetPropertyConstPtr(sData()));
    if (!stored)
        throw std::logic_error("no data in GetData()!? invalid/corrupted memory.");
    return stored;
}

// The readers of a part look at the value where it stands: a copy of an array costs two atomic operations.
const BVariant& FunctionVarStrategy::upToDateData() const
{
    static const BVariant null;
    const SimpleProperty* const stored = readDataProperty();
    return stored ? stored->GetValueRef() : null;
}

bool FunctionVarStrategy::computeIfDirty() const
{
    // Clients of the new data may destroy the owner, or assign to it.
    const Computation computation;
    const std::shared_ptr<Variable::Tracker> tracker = backRef()->getDirtyTracker();
    bool ownerLives = true;
    bool isFinal = true;
    tracker->updateIfDirty([this, &ownerLives, &isFinal] {
        const std::lock_guard<std::recursive_mutex> lock(mutex()); // a handle writes to the node, too
        const PropertyHandle self(backRef());
        const std::uint64_t refused = ReadInProgress::tooDeepCount();
        Compute();
        ownerLives = !self.IsExpired();
        isFinal = ReadInProgress::tooDeepCount() == refused;
    });
    // What lies too deep below this read wasn't reached. Read for itself it may be: what was stored isn't final.
    if (!isFinal)
        Computation::keepProvisional(tracker);
    if (!ownerLives || !Computation::isOutermost() || !Computation::hasProvisional())
        return ownerLives;
    const std::lock_guard<std::recursive_mutex> lock(mutex());
    const PropertyHandle self(backRef());
    Computation::endProvisional(); // which tells clients again
    return !self.IsExpired();
}

void FunctionVarStrategy::Compute() const
{
    const std::lock_guard<std::recursive_mutex> lock(mutex());
    Variable& owner = *backRef();
    const Function* function = GetFunction();
    if (!function)
        return;
    const Measurement<Variable>* described = function->GetMeasurement();
    if (!described) {
        qDebug().noquote().nospace() << "Orrery::FunctionVarStrategy::Compute"
                                     << " finds no measurement named " << function->GetFunctionName();
        return;
    }
    std::unique_ptr<Measurement<Variable>> working = makeWorkingClone(*described);
    const std::unique_ptr<AbstractProbe> probe(working ? working->make_probe() : nullptr);
    if (!probe) {
        qDebug().noquote().nospace() << "Orrery::FunctionVarStrategy::Compute"
                                     << " got no probe of " << function->GetFunctionName();
        return;
    }
    // The table has it from now on: a measurement may have handed out what lives as long as itself.
    Measurement<Variable>& measurement = *working.release();
    ProbeTable<Measurement<Variable>>::remember(probe.get(), &measurement);
    const PropertyHandle self(&owner);
    pushArguments(owner, sArguments(), measurement);
    if (self.IsExpired())
        return;
    measurement.set_output(&owner);
    // A measurement that returns nothing leaves the data alone: without this its probe would return what an earlier one
    // at the same address has had, which may be gone.
    ProbeTable<Variable>::remember(probe.get(), &owner);
    try {
        Variable* result = probe->run(nullptr);
        if (!result || result == &owner || self.IsExpired())
            return;
        qWarning().noquote().nospace() << owner.GetName() << " differs from " << result->GetName();
        moveResult(*result, self);
    } catch (const std::exception& error) {
        logFailure(error);
    }
}

Variable& FunctionVarStrategy::UpdateData(const BVariant& data, IsCellArray flag)
{
    push(data, flag);
    return *backRef();
}

std::uint64_t FunctionVarStrategy::GetMaxIndepOffset() const
{
    return offsetCount(upToDateData());
}

std::uint64_t FunctionVarStrategy::GetElementDimCount() const
{
    return upToDateData().getDimensions().size();
}

ERESULT FunctionVarStrategy::GetElementShape(std::vector<std::uint64_t>* shape) const
{
    if (!shape)
        return ER_INVALID_ARGUMENT;
    shape->clear();
    const BVariant& data = upToDateData();
    const auto dimensions = data.getDimensions();
    if (dimensions.size() > 0)
        shape->assign(std::next(dimensions.begin()), dimensions.end());
    return ER_SUCCESS;
}

ERESULT FunctionVarStrategy::GetValueAt(BVariant* out, std::uint64_t offset) const
{
    if (!out)
        return ER_INVALID_ARGUMENT;
    const BVariant& data = upToDateData();
    if (offsetCount(data) > 1)
        return readAt(out, data, offset);
    if (offset != 0)
        return ER_INVALID_ARGUMENT;
    *out = data;
    return ER_SUCCESS;
}

ERESULT FunctionVarStrategy::GetValueRange(BVariant* out, std::uint64_t start, std::uint64_t end) const
{
    if (!out)
        return ER_INVALID_ARGUMENT;
    const BVariant& data = upToDateData();
    const std::uint64_t count = offsetCount(data);
    if (count == 0) {
        *out = data;
        return ER_FAILED;
    }
    if (start >= count) {
        *out = BVariant();
        return ER_FAILED;
    }
    if (end == 0)
        end = count;
    if (start == 0 && end == count) {
        *out = data;
        return ER_SUCCESS;
    }
    try {
        *out = Brindle::Quay::sliceRange(data, start, end - 1);
        return ER_SUCCESS;
    } catch (const std::exception&) {
        return ER_FAILED;
    }
}

} // namespace Orrery
