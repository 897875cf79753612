#pragma once

#include <BE/Serialization.h>
#include <kiocore/Export.h>
#include <kiocore/classref/InterfaceRef.h>
#include <kiocore/utility/Guid.h>
#include <kiocore/utility/ImmutableString.h>
#include <kiocore/utility/UTF16String.h>
#include <kiomediatypes/PixelFormat.h>

#include <cstdint>
#include <vector>

namespace TR {

using kiocore::Guid;
using kiocore::ImmutableString;
using kiocore::InterfaceRef;
using kiocore::UTF16String;

extern KIO_EXPORT const Guid kEffectTypeClassID;
extern KIO_EXPORT const ImmutableString kKey_EffectType; ///< "EffectType"
/// Station for news of effect types, registered while the library is up.
extern KIO_EXPORT const ImmutableString kStation_EffectType; ///< "tr.effecttype"

/// A capability that effects can have (accelerated, YUV, 32-bit colour), with the effects that have it. Two
/// types are the same when their GUIDs are equal.
///
/// Threading: any thread, as nothing changes a type that was handed out.
class KIO_EXPORT IEffectType : public virtual kiocore::classref::Unknown {
public:
    static const CFUUIDBytes& InterfaceID();
    ~IEffectType() override;

    virtual Guid GetGuid() const = 0;
    /// For programs: "Accelerated", "YUV", "32BitColor". Never translated.
    virtual UTF16String GetName() const = 0;
    /// For people: in the application language, else in "en_US", else in the first locale that there is by
    /// code; empty when there is none.
    virtual UTF16String GetDescription() const = 0;
    virtual std::vector<UTF16String> GetMatchNames() const = 0;
};

/// The one implementation, which can be stored.
///
/// Threading: SetDescription and SerializeIn before the type is handed out, on one thread; the rest on any.
class KIO_EXPORT EffectType final : public IEffectType,
                                    public BE::ISerializeable,
                                    public virtual kiocore::classref::UnknownBase {
public:
    /// Keys of the stored form, and what one pair of each map is called there.
    static const ImmutableString kGuidKey;            ///< "Guid"
    static const ImmutableString kNameKey;            ///< "Name"
    static const ImmutableString kDescriptionsKey;    ///< "Descriptions"
    static const ImmutableString kDescriptionItemKey; ///< "DescriptionItem"
    static const ImmutableString kMatchNamesKey;      ///< "MatchNames"
    static const ImmutableString kMatchNameItemKey;   ///< "MatchNameItem"

    /// An empty one, of version 0.
    EffectType();
    /// One of the present version without descriptions.
    EffectType(const Guid& inGuid, const UTF16String& inName, std::vector<UTF16String> inMatchNames = {});
    ~EffectType() override;

    Guid GetGuid() const override;
    UTF16String GetName() const override;
    UTF16String GetDescription() const override;
    std::vector<UTF16String> GetMatchNames() const override;

    void* QueryMap(const CFUUIDBytes& inInterfaceID) override;

    void SerializeToSink(BE::IDictionarySink& inSink) const override;
    /// Takes every version but 0 and reads them alike; the type is then of the present version, with its
    /// match names in ascending order, each once. A description or a name that is absent stays as it was.
    /// @throws exIncomingObjectVersionTooOld for version 0, the type untouched. What the reader throws passes
    ///     through and leaves what was read before it.
    void SerializeIn(unsigned int inVersion, BE::DataReader& inReader) override;
    void SerializeOut(BE::DataWriter& inWriter) const override;
    /// 0 for an empty one, 3 for one that was read or built in.
    unsigned int GetVersion() const override;
    Guid GetClassID() const override;
    ImmutableString GetClassName() const override;

    /// In the application language, in place of an earlier text in that language.
    void SetDescription(const UTF16String& inText);

private:
    Guid mGuid;
    UTF16String mName;
    BE::ValueMap mDescriptions; // locale code to text
    std::vector<UTF16String> mMatchNames;
    std::uint32_t mVersion = 0;
};

/// The built-in types, without match names, described in the application language. Each call makes a new one.
KIO_EXPORT InterfaceRef<IEffectType> GetAcceleratedTimeEffectType();
KIO_EXPORT InterfaceRef<IEffectType> GetYUVEffectType();
KIO_EXPORT InterfaceRef<IEffectType> Get32BitEffectType();

/// Reads a type from an XML file; the back end must be up.
/// @return an empty type, of version 0, when the file cannot be opened; never an empty reference.
/// @throws what EffectType::SerializeIn throws.
KIO_EXPORT InterfaceRef<IEffectType> LoadEffectType(const UTF16String& inPath);

/// Appends the built-in types of an effect that works in these formats: YUV when one is YUV, then 32-bit
/// colour when one has 32-bit float components. What is in ioEffectTypes already is not looked at.
KIO_EXPORT void AddPixelFormatEffects(const std::vector<kiomediatypes::PixelFormat>& inPixelFormats,
                                      std::vector<InterfaceRef<IEffectType>>& ioEffectTypes);

} // namespace TR
