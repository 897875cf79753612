// Effect-type files: descriptions of a capability and of the effects that have it.
#include "../EffectOptions.h"

#include "../../support/AbsolutePath.h"
#include "../../support/Failure.h"

#include <BE/XMLFile.h>
#include <TR/EffectType.h>
#include <ZOL/PathUtils.h>
#include <kiocore/classref/ClassFactory.h>
#include <kiocore/filesupport/NativePath.h>
#include <kiocore/utility/Guid.h>

#include <filesystem>
#include <kiocore/utility/FileUtils.h>
#include <system_error>

namespace trhost {

namespace {

using kiocore::Guid;
using kiocore::InterfaceRef;
using kiocore::classref::ClassFactory;
using kiocore::utility::FileUtils;
using kiocore::utility::ToUTF16;

/// The descriptions by locale; empty for a file that is no effect-type file.
BE::ValueMap ReadDescriptions(const UTF16String& inPath)
{
    const InterfaceRef<BE::IXMLFileReader> reader =
        ClassFactory::CreateClassInstanceRef(BE::kXMLFileReaderClassID);
    BE::ValueMap descriptions;
    // The library reads a file that it cannot open as an empty type; people want to know.
    if (reader->Open(inPath) < 0) {
        throw Failure(kExit_Negative, Text("$$$/Halcyon/TrHost/BadTypeFile=@0 is no effect-type file: @1",
                                           {inPath, ToUTF16(reader->GetOpenError())}));
    }
    BE::ReadValueMap(reader->GetDataReader(), TR::EffectType::kDescriptionsKey, descriptions);
    return descriptions;
}

/// In the language that was asked for, whether the program has texts in it or not; else as the library has
/// it.
UTF16String DescriptionIn(const std::string& inLanguage, const BE::ValueMap& inDescriptions,
                          const InterfaceRef<TR::IEffectType>& inType)
{
    const UTF16String language = ToUTF16(inLanguage);
    for (const auto& [locale, text] : inDescriptions) {
        if (!language.empty() &&
            (locale == language || locale.substr(0, language.size() + 1) == language + u"_")) {
            return text;
        }
    }
    return inType->GetDescription();
}

void Show(Context& ioContext, const UTF16String& inPath)
{
    const BE::ValueMap descriptions = ReadDescriptions(inPath);
    const InterfaceRef<TR::IEffectType> type = TR::LoadEffectType(inPath);
    const UTF16String description = DescriptionIn(ioContext.options.language, descriptions, type);
    Output& output = ioContext.output;
    if (output.IsJson()) {
        JsonLine texts;
        for (const auto& [locale, text] : descriptions) {
            texts.Add(kiocore::utility::ToUTF8(locale), text);
        }
        output.Result({}, JsonLine()
                              .Add("guid", type->GetGuid().AsUTF8())
                              .Add("name", type->GetName())
                              .Add("description", description)
                              .Add("descriptions", texts)
                              .Add("matchNames", type->GetMatchNames()));
        return;
    }
    output.Line(u"name = " + type->GetName());
    output.Line(u"guid = " + type->GetGuid().AsString());
    output.Line(u"description = " + description);
    for (const auto& [locale, text] : descriptions) {
        output.Line(u"description[" + locale + u"] = " + text);
    }
    for (const UTF16String& matchName : type->GetMatchNames()) {
        output.Line(u"match-name = " + matchName);
    }
}

Guid ChosenGuid(const std::string& inText)
{
    if (inText.empty()) {
        return Guid::CreateUnique();
    }
    const auto guid = Guid::FromText(inText);
    if (!guid) {
        throw Failure(kExit_Usage,
                      Text("$$$/Halcyon/TrHost/BadTypeGuid=--guid @0: expected 8-4-4-4-12 hexadecimal digits",
                           {ToUTF16(inText)}));
    }
    return *guid;
}

BE::ValueMap ParseDescriptions(const std::vector<std::string>& inTexts)
{
    BE::ValueMap descriptions;
    for (const std::string& text : inTexts) {
        const std::size_t equals = text.find('=');
        if (equals == 0 || equals == std::string::npos) {
            throw Failure(kExit_Usage,
                          Text("$$$/Halcyon/TrHost/BadTypeText=--description @0: expected LOCALE=TEXT, as in "
                               "en_US=Fast effects",
                               {ToUTF16(text)}));
        }
        descriptions.insert_or_assign(ToUTF16(text.substr(0, equals)), ToUTF16(text.substr(equals + 1)));
    }
    return descriptions;
}

void Make(Context& ioContext, const UTF16String& inPath, const EffectTypeFileOptions& inOptions)
{
    if (inOptions.name.empty()) {
        throw Failure(kExit_Usage, Text("$$$/Halcyon/TrHost/NoTypeName=--write needs --name NAME"));
    }
    if (!inOptions.force && FileUtils::FileOrDirExists(inPath)) {
        throw Failure(
            kExit_Failed,
            Text("$$$/Halcyon/TrHost/TypeFileExists=@0 is there already; --force replaces it", {inPath}));
    }
    BE::ValueMap matchNames;
    for (const std::string& matchName : inOptions.matchNames) {
        matchNames.try_emplace(ToUTF16(matchName));
    }
    const Guid guid = ChosenGuid(inOptions.guid);
    const InterfaceRef<BE::IXMLFileWriter> writer =
        ClassFactory::CreateClassInstanceRef(BE::kXMLFileWriterClassID);
    BE::DataWriter& values = writer->GetDataWriter();
    values.WriteValue(TR::EffectType::kGuidKey, BE::SerializeableValue<Guid>(guid));
    values.WriteValue(TR::EffectType::kNameKey, ToUTF16(inOptions.name));
    BE::WriteValueMap(values, TR::EffectType::kDescriptionsKey, TR::EffectType::kDescriptionItemKey,
                      ParseDescriptions(inOptions.descriptions));
    BE::WriteValueMap(values, TR::EffectType::kMatchNamesKey, TR::EffectType::kMatchNameItemKey, matchNames);
    if (writer->Save(inPath) < 0) {
        throw Failure(kExit_Failed, Text("$$$/Halcyon/TrHost/TypeFileNotSaved=@0 could not be written: @1",
                                         {inPath, ToUTF16(writer->GetSaveResult().failedStep)}));
    }
    ioContext.output.Note(
        Text("$$$/Halcyon/TrHost/TypeFileMade=@0: effect type @1", {inPath, ToUTF16(inOptions.name)}),
        JsonLine().Add("output", inPath).Add("guid", guid.AsUTF8()));
}

} // namespace

int EffectsTypeFile(Context& ioContext, const EffectTypeFileOptions& inOptions)
{
    const UTF16String path = AbsolutePath(inOptions.file);
    if (inOptions.write) {
        Make(ioContext, path, inOptions);
    } else {
        Show(ioContext, path);
    }
    return kExit_Done;
}

} // namespace trhost
