#include "Parameters.h"

#include "../../EffectEngine.h"
#include "FilterKnowledge.h"
#include "support/KeptText.h"

#include <kiocore/config/Errors.h>

extern "C" {
#include <libavutil/opt.h>
#include <libavutil/parseutils.h>
}

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <set>

namespace trhost::effects::avfilter {
namespace {

using kiocore::kio_exception;

constexpr double kMicrosecondsPerSecond = 1e6;

/// The shortest text that reads back as the same number.
template <typename Number>
std::string NumberText(Number inNumber)
{
    char text[64];
    return {text, std::to_chars(text, text + sizeof text, inNumber).ptr};
}

std::vector<const AVOption*> OptionsOf(const AVFilter& inFilter)
{
    std::vector<const AVOption*> options;
    // An object is told from its class by its first member; the address of a class's address will do.
    const void* const object = &inFilter.priv_class;
    for (const AVOption* option = nullptr;
         inFilter.priv_class && (option = av_opt_next(object, option)) != nullptr;) {
        options.push_back(option);
    }
    return options;
}

/// The named values of an option, each value under its first name.
std::vector<const AVOption*> ConstantsOf(const std::vector<const AVOption*>& inOptions,
                                         const AVOption& inOption)
{
    std::vector<const AVOption*> constants;
    for (const AVOption* option : inOptions) {
        const bool isNew = std::none_of(constants.begin(), constants.end(), [&](const AVOption* inOther) {
            return inOther->default_val.i64 == option->default_val.i64;
        });
        if (option->type == AV_OPT_TYPE_CONST && inOption.unit && option->unit && isNew &&
            std::string_view(option->unit) == inOption.unit) {
            constants.push_back(option);
        }
    }
    return constants;
}

bool IsOffered(const AVOption& inOption)
{
    constexpr int kNotForUsers = AV_OPT_FLAG_READONLY | AV_OPT_FLAG_EXPORT | AV_OPT_FLAG_DEPRECATED;
    switch (inOption.type) {
    case AV_OPT_TYPE_CONST:
    case AV_OPT_TYPE_BINARY:
    case AV_OPT_TYPE_SAMPLE_FMT:
    case AV_OPT_TYPE_CHLAYOUT:
        return false;
    default:
        return (inOption.flags & kNotForUsers) == 0;
    }
}

std::string ColorText(const char* inColor)
{
    std::uint8_t rgba[4];
    if (!inColor || av_parse_color(rgba, inColor, -1, nullptr) < 0) {
        return inColor ? inColor : "";
    }
    char text[16];
    std::snprintf(text, sizeof text, "#%02x%02x%02x%02x", rgba[0], rgba[1], rgba[2], rgba[3]);
    return text;
}

void DescribeInteger(const AVOption& inOption, const std::vector<const AVOption*>& inConstants,
                     EffectParameter& ioParameter)
{
    ioParameter.hasRange = true;
    ioParameter.minimum = inOption.min;
    ioParameter.maximum = inOption.max;
    ioParameter.defaultValue = NumberText(inOption.default_val.i64);
    ioParameter.kind = inConstants.empty() ? ParameterKind::kInteger : ParameterKind::kChoice;
    for (const AVOption* constant : inConstants) {
        ioParameter.choices.emplace_back(constant->name);
        if (constant->default_val.i64 == inOption.default_val.i64) {
            ioParameter.defaultValue = constant->name;
        }
    }
}

void DescribeFlags(const AVOption& inOption, const std::vector<const AVOption*>& inConstants,
                   EffectParameter& ioParameter)
{
    ioParameter.kind = ParameterKind::kText;
    std::string names;
    for (const AVOption* constant : inConstants) {
        names += (names.empty() ? "" : ", ") + std::string(constant->name);
        const std::int64_t bits = constant->default_val.i64;
        if (bits != 0 && (inOption.default_val.i64 & bits) == bits) {
            ioParameter.defaultValue +=
                (ioParameter.defaultValue.empty() ? "" : "+") + std::string(constant->name);
        }
    }
    if (ioParameter.defaultValue.empty()) {
        ioParameter.defaultValue = NumberText(inOption.default_val.i64);
    }
    if (!names.empty()) {
        ioParameter.explanation += " (joined by +: " + names + ")";
    }
}

void DescribeNumber(const AVOption& inOption, double inScale, double inDefault, EffectParameter& ioParameter)
{
    ioParameter.kind = ParameterKind::kNumber;
    ioParameter.hasRange = true;
    ioParameter.minimum = inOption.min / inScale;
    ioParameter.maximum = inOption.max / inScale;
    ioParameter.defaultValue = NumberText(inDefault);
}

void DescribeSwitch(const AVOption& inOption, EffectParameter& ioParameter)
{
    const std::int64_t value = inOption.default_val.i64;
    ioParameter.defaultValue = value < 0 ? "auto" : value > 0 ? "true" : "false";
    ioParameter.kind = ParameterKind::kBool;
    if (inOption.min < 0) {
        ioParameter.kind = ParameterKind::kChoice;
        ioParameter.choices = {"auto", "false", "true"};
    }
}

EffectParameter Describe(const AVOption& inOption, const std::vector<const AVOption*>& inOptions)
{
    EffectParameter parameter;
    parameter.name = inOption.name;
    parameter.displayName = inOption.name;
    parameter.explanation = inOption.help ? inOption.help : "";
    switch (inOption.type) {
    case AV_OPT_TYPE_BOOL:
        DescribeSwitch(inOption, parameter);
        break;
    case AV_OPT_TYPE_INT:
    case AV_OPT_TYPE_INT64:
    case AV_OPT_TYPE_UINT64:
        DescribeInteger(inOption, ConstantsOf(inOptions, inOption), parameter);
        break;
    case AV_OPT_TYPE_FLAGS:
        DescribeFlags(inOption, ConstantsOf(inOptions, inOption), parameter);
        break;
    case AV_OPT_TYPE_FLOAT: // as precise as it is kept
        DescribeNumber(inOption, 1, inOption.default_val.dbl, parameter);
        parameter.defaultValue = NumberText(float(inOption.default_val.dbl));
        break;
    case AV_OPT_TYPE_DOUBLE:
        DescribeNumber(inOption, 1, inOption.default_val.dbl, parameter);
        break;
    case AV_OPT_TYPE_DURATION:
        DescribeNumber(inOption, kMicrosecondsPerSecond,
                       double(inOption.default_val.i64) / kMicrosecondsPerSecond, parameter);
        break;
    case AV_OPT_TYPE_RATIONAL:
        parameter.kind = ParameterKind::kText;
        parameter.defaultValue = NumberText(inOption.default_val.dbl);
        break;
    case AV_OPT_TYPE_PIXEL_FMT:
        parameter.kind = ParameterKind::kText; // by its name; none is the default of all that have one
        break;
    case AV_OPT_TYPE_COLOR:
        parameter.kind = ParameterKind::kColor;
        parameter.defaultValue = ColorText(inOption.default_val.str);
        break;
    default:
        parameter.kind = ParameterKind::kText;
        parameter.defaultValue = inOption.default_val.str ? inOption.default_val.str : "";
        break;
    }
    return parameter;
}

const AVOption* FirstOfType(const AVFilter& inFilter, AVOptionType inType, std::string_view inName)
{
    for (const AVOption* option : OptionsOf(inFilter)) {
        if (option->type == inType && option->name == inName) {
            return option;
        }
    }
    return nullptr;
}

[[noreturn]] void Refuse(const std::string& inWhose, const EffectParameter& inParameter,
                         const std::string& inValue, const std::string& inExpected)
{
    throw kio_exception(KeptText("$$$/Halcyon/TrHost/Effects/ParameterIs=@0: parameter @1 is \"@2\", "
                                 "expected @3#{@0: a match name, @3: a number, 0 to 1}",
                                 {inWhose, inParameter.name, inValue, inExpected}),
                        kEffectError_BadParameter);
}

template <typename Number>
bool Read(const std::string& inText, Number& outNumber)
{
    const char* const end = inText.data() + inText.size();
    const auto result = std::from_chars(inText.data(), end, outNumber);
    return result.ec == std::errc() && result.ptr == end;
}

std::vector<std::string> RangeOf(const EffectParameter& inParameter)
{
    return {NumberText(inParameter.minimum), NumberText(inParameter.maximum)};
}

std::string IntegerValue(const std::string& inWhose, const EffectParameter& inParameter,
                         const std::string& inValue, const std::string& inExpected)
{
    std::int64_t number = 0;
    double wide = 0; // of any size, so that too many digits are far away and not wrong
    if (!Read(inValue, wide) || !std::isfinite(wide) || wide != std::trunc(wide)) {
        Refuse(inWhose, inParameter, inValue, inExpected);
    }
    if (wide < inParameter.minimum || wide > inParameter.maximum || !Read(inValue, number)) {
        return NumberText(std::clamp(wide, inParameter.minimum, inParameter.maximum));
    }
    return NumberText(number);
}

std::string NumberValue(const std::string& inWhose, const EffectParameter& inParameter,
                        const std::string& inValue)
{
    double number = 0;
    if (!Read(inValue, number) || std::isnan(number)) {
        Refuse(inWhose, inParameter, inValue,
               KeptText("$$$/Halcyon/TrHost/Effects/Expected/NumberIn=a number, @0 to @1",
                        RangeOf(inParameter)));
    }
    number = std::clamp(number, inParameter.minimum, inParameter.maximum);
    return NumberText(number);
}

bool IsColor(const std::string& inValue)
{
    return (inValue.size() == 7 || inValue.size() == 9) && inValue[0] == '#' &&
           inValue.find_first_not_of("0123456789abcdefABCDEF", 1) == std::string::npos;
}

} // namespace

std::vector<EffectParameter> ParametersOf(const AVFilter& inFilter)
{
    const std::vector<const AVOption*> options = OptionsOf(inFilter);
    // Names of one option are told by where its value lies; so what is withheld is, under all its names.
    std::set<int> taken;
    for (const AVOption* option : options) {
        if (option->type != AV_OPT_TYPE_CONST && IsWithheld(inFilter.name, option->name)) {
            taken.insert(option->offset);
        }
    }
    if (inFilter.nb_inputs == 0) {
        for (const AVOption* option : {SizeOptionOf(inFilter), RateOptionOf(inFilter)}) {
            if (option) {
                taken.insert(option->offset);
            }
        }
    }
    std::vector<EffectParameter> parameters;
    for (const AVOption* option : options) {
        if (IsOffered(*option) && taken.insert(option->offset).second) {
            parameters.push_back(Describe(*option, options));
        }
    }
    return parameters;
}

const AVOption* SizeOptionOf(const AVFilter& inFilter)
{
    return FirstOfType(inFilter, AV_OPT_TYPE_IMAGE_SIZE, "size");
}

const AVOption* RateOptionOf(const AVFilter& inFilter)
{
    return FirstOfType(inFilter, AV_OPT_TYPE_VIDEO_RATE, "rate");
}

std::string ToOptionValue(const std::string& inWhose, const EffectParameter& inParameter,
                          const std::string& inValue)
{
    switch (inParameter.kind) {
    case ParameterKind::kBool:
        if (inValue != "true" && inValue != "false") {
            Refuse(inWhose, inParameter, inValue,
                   KeptText("$$$/Halcyon/TrHost/Effects/Expected/Either=@0 or @1#{@0: true, @1: false}",
                            {"\"true\"", "\"false\""}));
        }
        return inValue;
    case ParameterKind::kInteger:
        return IntegerValue(
            inWhose, inParameter, inValue,
            KeptText("$$$/Halcyon/TrHost/Effects/Expected/WholeNumberIn=a whole number, @0 to @1",
                     RangeOf(inParameter)));
    case ParameterKind::kNumber:
        return NumberValue(inWhose, inParameter, inValue);
    case ParameterKind::kChoice: {
        const auto& choices = inParameter.choices;
        if (std::find(choices.begin(), choices.end(), inValue) != choices.end()) {
            return inValue;
        }
        std::string names;
        for (const std::string& choice : choices) {
            names += (names.empty() ? "" : " ") + choice;
        }
        const std::string expected =
            KeptText("$$$/Halcyon/TrHost/Effects/Expected/OneOf=one of @0#{@0: words}", {names});
        if (!inParameter.hasRange) {
            Refuse(inWhose, inParameter, inValue, expected);
        }
        return IntegerValue(inWhose, inParameter, inValue, expected);
    }
    case ParameterKind::kColor:
        if (!IsColor(inValue)) {
            Refuse(inWhose, inParameter, inValue,
                   KeptText("$$$/Halcyon/TrHost/Effects/Expected/Either=@0 or @1#{@0: true, @1: false}",
                            {"\"#rrggbb\"", "\"#rrggbbaa\""}));
        }
        return inValue;
    case ParameterKind::kText:
    case ParameterKind::kPosition:
        break;
    }
    return inValue;
}

} // namespace trhost::effects::avfilter
