#include <TR/FileExtensions.h>

namespace TR {

const UTF16String kExtensionProject(u".hproj");
const UTF16String kExtensionProjectBackup(u".hprojbackup");
const UTF16String kExtensionProjectLock(u".hprojlock");
const UTF16String kExtensionProjectTemplate(u".hprojtemplate");
const UTF16String kExtensionSequenceTemplate(u".hseqtemplate");
const UTF16String kExtensionTitleTemplate(u".htitletemplate");
const UTF16String kExtensionCaptionTemplate(u".hcaptiontemplate");

const UTF16String kExtensionSubRip(u".srt");
const UTF16String kExtensionWebVTT(u".vtt");
const UTF16String kExtensionSCC(u".scc");
const UTF16String kExtensionMCC(u".mcc");
const UTF16String kExtensionEBUSubtitles(u".stl");
const UTF16String kExtensionTimedText(u".ttml");
const UTF16String kExtensionDistributionProfile(u".dfxp");
const UTF16String kExtensionSubStation(u".ssa");
const UTF16String kExtensionAdvancedSubStation(u".ass");

const UTF16String kExtensionXML(u".xml");
const UTF16String kExtensionEditDecisionList(u".edl");
const UTF16String kExtensionAdvancedAuthoringFormat(u".aaf");
const UTF16String kExtensionOpenMediaFramework(u".omf");
const UTF16String kExtensionOpenTimeline(u".otio");
const UTF16String kExtensionOpenTimelineArchive(u".otioz");
const UTF16String kExtensionOpenTimelineFolder(u".otiod");
const UTF16String kExtensionColorDecisionList(u".cdl");
const UTF16String kExtensionColorCorrectionCollection(u".ccc");

} // namespace TR
