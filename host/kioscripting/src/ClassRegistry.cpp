#include <kioscripting/Factory.h>

#include <kiocore/debug/Trace.h>

#include <algorithm>
#include <atomic>
#include <map>
#include <mutex>

namespace kioscripting {
namespace {

struct Registration {
    const factory::ScriptObjectDefinitionInitiator* owner;
    factory::DefineFunction define;
    ClassDefinitionPtr definition; // empty until somebody asked
};
struct Transformation {
    const factory::ScriptObjectDefinitionRegistrar* owner;
    factory::ObjectTransformation transformation;
};

/// Never destroyed: libraries are unloaded after everything else.
struct Registrations {
    std::atomic<std::uint64_t> version{1};
    std::mutex lock;                   // guards the members below
    std::vector<Registration> classes; // in the order of registration
    std::vector<Transformation> transformations;
};
Registrations& All()
{
    static auto* const sAll = new Registrations();
    return *sAll;
}

/// Definitions are made unlocked: those who make them may ask for classes. Two threads may both make one; the
/// first to be kept is everybody's.
std::vector<ClassDefinitionPtr> Definitions()
{
    Registrations& all = All();
    std::vector<std::pair<const factory::ScriptObjectDefinitionInitiator*, factory::DefineFunction>> missing;
    std::vector<ClassDefinitionPtr> definitions;
    {
        std::lock_guard lock(all.lock);
        for (const Registration& registration : all.classes) {
            if (registration.definition) {
                definitions.push_back(registration.definition);
            } else {
                missing.emplace_back(registration.owner, registration.define);
            }
        }
    }
    if (missing.empty()) {
        return definitions;
    }
    for (const auto& [owner, define] : missing) {
        auto definition = std::make_shared<const ClassDefinition>(define());
        std::lock_guard lock(all.lock);
        for (Registration& registration : all.classes) {
            if (registration.owner == owner && !registration.definition) {
                registration.definition = definition;
            }
        }
    }
    return Definitions();
}

/// The one registered last.
template <typename Predicate>
ClassDefinitionPtr LastOf(Predicate inPredicate)
{
    const std::vector<ClassDefinitionPtr> definitions = Definitions();
    const auto found = std::find_if(definitions.rbegin(), definitions.rend(),
                                    [&](const ClassDefinitionPtr& inClass) { return inPredicate(*inClass); });
    return found == definitions.rend() ? nullptr : *found;
}

} // namespace

std::uint64_t ClassRegistry::Version()
{
    return All().version.load();
}

std::vector<ClassDefinitionPtr> ClassRegistry::AllClasses()
{
    std::map<std::string, ClassDefinitionPtr> byName;
    for (const ClassDefinitionPtr& definition : Definitions()) {
        byName[definition->QualifiedName()] = definition;
    }
    std::vector<ClassDefinitionPtr> classes;
    for (const auto& [name, definition] : byName) {
        classes.push_back(definition);
    }
    return classes;
}

ClassDefinitionPtr ClassRegistry::FindClass(std::string_view inQualifiedName)
{
    return LastOf([&](const ClassDefinition& inClass) { return inClass.QualifiedName() == inQualifiedName; });
}

ClassDefinitionPtr ClassRegistry::FindClass(std::type_index inNativeType)
{
    return LastOf([&](const ClassDefinition& inClass) { return inClass.nativeType == inNativeType; });
}

ClassDefinitionPtr ClassRegistry::ClassOf(const ScriptObject& inObject)
{
    return FindClass(std::type_index(typeid(inObject)));
}

namespace factory {

ScriptObjectDefinitionInitiator::ScriptObjectDefinitionInitiator(DefineFunction inDefine)
{
    Registrations& all = All();
    std::lock_guard lock(all.lock);
    all.classes.push_back({this, inDefine, nullptr});
    ++all.version;
}

ScriptObjectDefinitionInitiator::~ScriptObjectDefinitionInitiator()
{
    Registrations& all = All();
    std::lock_guard lock(all.lock);
    std::erase_if(all.classes, [this](const Registration& inOne) { return inOne.owner == this; });
    ++all.version;
}

ScriptObjectDefinitionRegistrar::ScriptObjectDefinitionRegistrar(DefineFunction inDefine,
                                                                 ObjectTransformation inTransformation)
    : mInitiator(inDefine)
{
    Registrations& all = All();
    std::lock_guard lock(all.lock);
    all.transformations.push_back({this, std::move(inTransformation)});
}

ScriptObjectDefinitionRegistrar::~ScriptObjectDefinitionRegistrar()
{
    Registrations& all = All();
    std::lock_guard lock(all.lock);
    std::erase_if(all.transformations, [this](const Transformation& inOne) { return inOne.owner == this; });
}

ScriptObjectPtr Transform(std::type_index inInterface, const void* inReference, int inContext)
{
    KIO_HOST_CALL("kioscripting::Transform", inInterface.name(), inContext);
    ObjectTransformation transformation;
    {
        Registrations& all = All();
        std::lock_guard lock(all.lock);
        const auto found = std::find_if(
            all.transformations.rbegin(), all.transformations.rend(),
            [&](const Transformation& inOne) { return inOne.transformation.interfaceType == inInterface; });
        if (found != all.transformations.rend()) {
            transformation = found->transformation;
        }
    }
    return transformation.transform ? transformation.transform(inReference, inContext) : nullptr;
}

} // namespace factory
} // namespace kioscripting
