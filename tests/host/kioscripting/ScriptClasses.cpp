#include "ScriptClasses.h"

#include <kiocore/config/Errors.h>

#include <boost/throw_exception.hpp>

#include <new>
#include <stdexcept>

namespace script_classes {
namespace {

using kioscripting::ClassBuilder;
using kioscripting::ClassDefinition;

ClassDefinition DefineLevel()
{
    return ClassBuilder<Level>("Acme.Sound", "Level", "How loud something is.")
        .Constructor("Construct a level", &Level::Initialize,
                     {{"decibels", "number", kioscripting::kParameter_Optional}})
        .Property("decibels", "number", "Below full scale", &Level::GetDecibels)
        .Property("label", "string", "As people read it", &Level::GetLabel)
        .Property("peak", "number", "Cannot be read", &Level::GetPeak)
        .Property("twin", "object", "Another one", &Level::GetTwin, kioscripting::kProperty_Object)
        .Method("above", "Says whether it is the louder one", &Level::IsAbove,
                {{"other", "Level", kioscripting::kParameter_Required, "to compare with"}},
                {"isAbove", "boolean"})
        .Method("itself", "Returns this object", &Level::GetItself, {}, {"level", "Level"})
        .Method("echo", "Returns what it is given", &Level::Echo, {{"value", "object"}})
        .Method("set", "Makes it louder", &Level::Set, {{"decibels", "number"}})
        .Method("fail", "Throws", &Level::Fail, {{"kind", "string"}})
        .Finish();
}

ClassDefinition DefineMeter()
{
    return ClassBuilder<Meter>("Acme.Sound", "Meter", "Shows levels.")
        .Method("call", "Calls the test", &Meter::Call)
        .Finish();
}

const kioscripting::factory::ScriptObjectDefinitionInitiator sLevel(&DefineLevel);
const kioscripting::factory::ScriptObjectDefinitionInitiator sMeter(&DefineMeter);

} // namespace

std::string Level::GetLabel() const
{
    return std::to_string(int(mDecibels)) + " dB \xE2\x99\xAA";
}

double Level::GetPeak() const
{
    throw kiocore::kio_exception("The meter is off", 0x80770001);
}

LevelPtr Level::GetTwin() const
{
    if (!mTwin) {
        mTwin = kioscripting::CreateScriptObject<Level>(GetContextHdl());
        mTwin->Initialize(mDecibels);
    }
    return mTwin;
}

void Level::Fail(const std::string& inKind) const
{
    if (inKind == "kio") {
        throw kiocore::kio_exception("Too loud", 0x80770002);
    }
    if (inKind == "boost") {
        boost::throw_exception(kiocore::kio_exception("Too loud for boost", 0x80770003));
    }
    if (inKind == "memory") {
        throw std::bad_alloc();
    }
    if (inKind == "standard") {
        throw std::out_of_range("out of range");
    }
    if (inKind == "number") {
        throw 5;
    }
}

void Meter::Call() const
{
    if (sCalled) {
        sCalled();
    }
}

Meter::~Meter()
{
    if (sDestroyed) {
        sDestroyed();
    }
}

ClassDefinition DefineExtra()
{
    return ClassBuilder<Stranger>("Acme", "Late", "Registered late.").Constructor("Construct").Finish();
}

} // namespace script_classes
