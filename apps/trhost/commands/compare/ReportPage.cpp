#include "ReportPage.h"

#include "ReportTemplate.h"

#include "../../support/Failure.h"

#include <kiocore/config/Localizer.h>

#include <map>
#include <string_view>

namespace trhost::compare {

namespace {

using kiocore::utility::ToUTF8;

constexpr std::string_view kPlaceOfPictures = "<!--pictures-->\n";

using Values = std::map<std::string, std::string, std::less<>>;

/// JSON that may stand in a script element: nothing in it can end that.
std::string ForScript(const JsonLine& inObject)
{
    std::string text;
    for (char letter : inObject.GetText()) {
        if (letter == '<') {
            text += "\\u003c";
        } else {
            text += letter;
        }
    }
    return text;
}

/// What the page's program says.
JsonLine ProgramTexts()
{
    return JsonLine()
        .Add("same", Text("$$$/Halcyon/TrHost/Report/Same=same"))
        .Add("different", Text("$$$/Halcyon/TrHost/Report/Different=different"))
        .Add("onlyInA", Text("$$$/Halcyon/TrHost/Report/OnlyInA=only in the first"))
        .Add("onlyInB", Text("$$$/Halcyon/TrHost/Report/OnlyInB=only in the second"))
        .Add("failed", Text("$$$/Halcyon/TrHost/Report/Failed=failed"))
        .Add("first", Text("$$$/Halcyon/TrHost/Report/First=First picture"))
        .Add("second", Text("$$$/Halcyon/TrHost/Report/Second=Second picture"))
        .Add("swiped",
             Text("$$$/Halcyon/TrHost/Report/Swiped=First picture on the left, second on the right"))
        .Add("painted",
             Text("$$$/Halcyon/TrHost/Report/Painted=Difference, lifted so that one step can be seen"))
        .Add("scaled",
             Text("$$$/Halcyon/TrHost/Report/Scaled=Pictures are shown smaller than they are; figures "
                  "are those of the whole pictures."))
        .Add("leftOut", Text("$$$/Halcyon/TrHost/Report/LeftOut=The page has no room for more pictures; "
                             "figures are complete."))
        .Add("noPictures",
             Text("$$$/Halcyon/TrHost/Report/NoPictures=Pictures that are the same are not shown."));
}

Values PageTexts()
{
    const std::pair<const char*, UTF16String> kTexts[] = {
        {"title", Text("$$$/Halcyon/TrHost/Report/Title=Comparison of pictures")},
        {"theme", Text("$$$/Halcyon/TrHost/Report/Theme=Dark or light")},
        {"pairs", Text("$$$/Halcyon/TrHost/Report/Pairs=Pairs of pictures")},
        {"show", Text("$$$/Halcyon/TrHost/Report/Show=Show")},
        {"outcome", Text("$$$/Halcyon/TrHost/Report/Outcome=Outcome")},
        {"name", Text("$$$/Halcyon/TrHost/Report/Name=Name")},
        {"pixels", Text("$$$/Halcyon/TrHost/Report/Pixels=Pixels")},
        {"none", Text("$$$/Halcyon/TrHost/Report/None=Nothing to show: choose more above.")},
        {"view", Text("$$$/Halcyon/TrHost/Report/View=View")},
        {"sides", Text("$$$/Halcyon/TrHost/Report/Sides=Side by side")},
        {"swipe", Text("$$$/Halcyon/TrHost/Report/Swipe=Swipe")},
        {"difference", Text("$$$/Halcyon/TrHost/Report/Difference=Difference")},
        {"full", Text("$$$/Halcyon/TrHost/Report/Full=Full size")},
        {"frame", Text("$$$/Halcyon/TrHost/Report/Frame=Frame what differs")},
        {"slider", Text("$$$/Halcyon/TrHost/Report/Slider=How much of the first picture is shown")},
        {"keyNext", Text("$$$/Halcyon/TrHost/Report/KeyNext=next and previous pair")},
        {"keyView", Text("$$$/Halcyon/TrHost/Report/KeyView=view")},
        {"keySwipe", Text("$$$/Halcyon/TrHost/Report/KeySwipe=swipe")},
        {"noScript",
         Text("$$$/Halcyon/TrHost/Report/NoScript=This page needs JavaScript, which is switched off.")},
    };
    Values values;
    for (const auto& [name, text] : kTexts) {
        values[name] = EscapedForHTML(ToUTF8(text));
    }
    std::string language = kiocore::config::Localizer::GetLanguage();
    for (char& letter : language) {
        letter = letter == '_' ? '-' : letter;
    }
    values["language"] = EscapedForHTML(language.empty() ? "en" : language);
    values["texts"] = ForScript(ProgramTexts());
    return values;
}

std::string Filled(std::string_view inTemplate, const Values& inValues)
{
    std::string text;
    for (;;) {
        const std::size_t begin = inTemplate.find("{{");
        const std::size_t end = begin == inTemplate.npos ? begin : inTemplate.find("}}", begin);
        if (end == inTemplate.npos) {
            return text += inTemplate;
        }
        text += inTemplate.substr(0, begin);
        if (const auto value = inValues.find(inTemplate.substr(begin + 2, end - begin - 2));
            value != inValues.end()) {
            text += value->second;
        }
        inTemplate.remove_prefix(end + 2);
    }
}

} // namespace

std::string ReportPageStart()
{
    const std::string_view page = kReportTemplate;
    return Filled(page.substr(0, page.find(kPlaceOfPictures)), PageTexts());
}

std::string ReportPageEnd(const JsonLine& inData)
{
    const std::string_view page = kReportTemplate;
    return Filled(page.substr(page.find(kPlaceOfPictures) + kPlaceOfPictures.size()),
                  {{"data", ForScript(inData)}});
}

std::string EscapedForHTML(std::string_view inUTF8)
{
    std::string text;
    for (char letter : inUTF8) {
        switch (letter) {
        case '&':
            text += "&amp;";
            break;
        case '<':
            text += "&lt;";
            break;
        case '>':
            text += "&gt;";
            break;
        case '"':
            text += "&quot;";
            break;
        default:
            text += letter;
        }
    }
    return text;
}

} // namespace trhost::compare
