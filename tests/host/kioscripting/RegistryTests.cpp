#include "ScriptClasses.h"

#include <kiocore/config/Errors.h>

#include <gmock/gmock.h>

namespace {

using kioscripting::ClassDefinition;
using kioscripting::ClassRegistry;
using kioscripting::Describe;
using kioscripting::factory::ScriptObjectDefinitionInitiator;

ClassDefinition DefineOtherLevel()
{
    return kioscripting::ClassBuilder<script_classes::Level>("Acme.Sound", "Level", "Another.").Finish();
}

std::vector<std::string> Names()
{
    std::vector<std::string> names;
    for (const auto& definition : ClassRegistry::AllClasses()) {
        names.push_back(definition->QualifiedName());
    }
    return names;
}

TEST(ScriptClassRegistry, HoldsWhatIsRegisteredWhileItIs)
{
    const std::vector<std::string> kUsual = {"Acme.Sound.Level", "Acme.Sound.Meter", "Halcyon.Guid"};
    const std::uint64_t version = ClassRegistry::Version();
    EXPECT_EQ(Names(), kUsual);
    {
        const ScriptObjectDefinitionInitiator late(&script_classes::DefineExtra);
        const ScriptObjectDefinitionInitiator other(&DefineOtherLevel);
        EXPECT_NE(ClassRegistry::Version(), version);
        EXPECT_THAT(Names(), testing::ElementsAre("Acme.Late", "Acme.Sound.Level", "Acme.Sound.Meter",
                                                  "Halcyon.Guid"));
        EXPECT_EQ(ClassRegistry::FindClass("Acme.Sound.Level")->description, "Another.");
    }
    EXPECT_EQ(Names(), kUsual);
    EXPECT_EQ(ClassRegistry::FindClass("Acme.Sound.Level")->description, "How loud something is.");
    EXPECT_FALSE(ClassRegistry::FindClass("Acme.Late"));
    EXPECT_FALSE(ClassRegistry::FindClass("Level"));
    EXPECT_FALSE(ClassRegistry::ClassOf(script_classes::Stranger()));
}

TEST(ScriptClassRegistry, DescribesClassesAndNamespaces)
{
    EXPECT_EQ(Describe("Acme.Sound.Level"),
              "class Acme.Sound.Level\n    How loud something is.\n"
              "\n  new Level(decibels?: number)\n      Construct a level\n"
              "\n  above(other: Level): boolean  (isAbove)\n      Says whether it is the louder one\n"
              "      other: to compare with\n"
              "\n  itself(): Level  (level)\n      Returns this object\n"
              "\n  echo(value: object)\n      Returns what it is given\n"
              "\n  set(decibels: number)\n      Makes it louder\n"
              "\n  fail(kind: string)\n      Throws\n"
              "\n  decibels: number  (read-only)\n      Below full scale\n"
              "\n  label: string  (read-only)\n      As people read it\n"
              "\n  peak: number  (read-only)\n      Cannot be read\n"
              "\n  twin: object  (read-only)\n      Another one\n");
    EXPECT_EQ(Describe("Acme"), "namespace Acme\n  Acme.Sound\n");
    EXPECT_EQ(Describe("Acme.Sound"),
              "namespace Acme.Sound\n  Level\n      How loud something is.\n  Meter\n      "
              "Shows levels.\n");
    EXPECT_EQ(Describe(""), "namespaces\n  Acme.Sound\n  Halcyon\n");
    for (const char* nothing : {"Acm", "Acme.", "acme.sound", "Level"}) {
        EXPECT_THROW(Describe(nothing), kiocore::kio_exception) << nothing;
    }
}

TEST(ScriptClassBuilder, RefusesMembersThatAreDescribedWrongly)
{
    kioscripting::ClassBuilder<script_classes::Level> builder("Acme", "Wrong", "");
    EXPECT_THROW(builder.Method("above", "", &script_classes::Level::IsAbove), std::logic_error);
    EXPECT_THROW(builder.Constructor("", &script_classes::Level::Initialize, {}), std::logic_error);
}

} // namespace
