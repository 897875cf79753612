#include <TR/FilterModuleObject.h>

#include <kiocore/config/Errors.h>
#include <kioscripting/ClassBuilder.h>

#include "../crash/SpecimenModules.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using kioscripting::ClassRegistry;
using kioscripting::ReadProperty;
using kioscripting::ScriptObjectPtr;
using kioscripting::Value;
using TR::IFilterModuleRef;
using TRFoundation::Scripting::CreateFilterModuleObject;
using TRFoundation::Scripting::FilterModuleObject;

IFilterModuleRef MakeFilterModule(const char* inMatchName, const char16_t* inDisplayName)
{
    return kiocore::classref::MakeObject<specimen::FilterModule>(inMatchName, inDisplayName);
}

class FilterModuleScripting : public testing::Test {
protected:
    ~FilterModuleScripting() override { kioscripting::CloseContext(mContext); }
    const int mContext = kioscripting::OpenContext();
};

TEST_F(FilterModuleScripting, IsPublishedWithoutAConstructor)
{
    const auto definition = ClassRegistry::FindClass("Halcyon.TRFoundation.FilterModule");
    ASSERT_TRUE(definition);
    EXPECT_EQ(kioscripting::Describe("Halcyon.TRFoundation.FilterModule"),
              "class Halcyon.TRFoundation.FilterModule\n"
              "    A filter (audio/video) of a project\n\n"
              "  mediaType: object  (read-only)\n      Returns the media type guid for the filter object\n\n"
              "  displayName: string  (read-only)\n      Returns the display name for the filter\n\n"
              "  matchName: string  (read-only)\n      Returns the internal matchname for the filter\n");
    EXPECT_EQ(definition->properties[0].flags, kioscripting::kProperty_Object);
    EXPECT_EQ(definition->properties[1].flags, kioscripting::kProperty_Plain);
    EXPECT_EQ(definition->properties[2].flags, kioscripting::kProperty_Plain);
    EXPECT_THROW(kioscripting::ConstructObject(*definition, mContext), kiocore::kio_exception);
}

TEST_F(FilterModuleScripting, ShowsAModuleWithoutKeepingItLoaded)
{
    IFilterModuleRef module = MakeFilterModule("Acme.Blur", u"Weichz\u00E9ichner \u65E5");
    const Value shown = kioscripting::Convert<std::vector<IFilterModuleRef>>::To({module}, mContext);
    const ScriptObjectPtr object = *shown.As<Value::Array>()->at(0).As<ScriptObjectPtr>();
    EXPECT_EQ(object->GetContextHdl(), mContext);
    EXPECT_EQ(ReadProperty(*object, "displayName"), Value("Weichz\xC3\xA9ichner \xE6\x97\xA5"));
    EXPECT_EQ(ReadProperty(*object, "matchName"), Value("Acme.Blur"));
    const Value mediaType = ReadProperty(*object, "mediaType");
    EXPECT_EQ(kioscripting::Convert<kiocore::Guid>::From(mediaType), TR::kMediaType_Video);
    EXPECT_EQ((*mediaType.As<ScriptObjectPtr>())->GetContextHdl(), mContext);
    EXPECT_EQ(kioscripting::Convert<IFilterModuleRef>::From(object), module) << "back where natives want it";

    module.Reset();
    for (const char* const property : {"mediaType", "displayName", "matchName"}) {
        SCOPED_TRACE(property);
        try {
            ReadProperty(*object, property);
            ADD_FAILURE() << "nothing was thrown";
        } catch (const kiocore::null_reference_exception& error) {
            EXPECT_THAT(error.what(), testing::HasSubstr("TR::IFilterModule"));
        }
    }
    IFilterModuleRef gone = MakeFilterModule("Acme.Other", u"Other");
    EXPECT_FALSE(dynamic_cast<FilterModuleObject&>(*object).CastTo(gone));
    EXPECT_FALSE(gone);
}

TEST_F(FilterModuleScripting, AnEmptyReferenceGivesAnObjectThatHasNothing)
{
    const ScriptObjectPtr object = CreateFilterModuleObject({}, mContext);
    ASSERT_TRUE(object);
    EXPECT_THROW(ReadProperty(*object, "displayName"), kiocore::null_reference_exception);
    IFilterModuleRef module;
    EXPECT_FALSE(dynamic_cast<FilterModuleObject&>(*object).CastTo(module));
    kioscripting::CloseContext(mContext);
    EXPECT_FALSE(CreateFilterModuleObject({}, mContext)) << "nothing is made in a closed context";
}

} // namespace
