#pragma once

#include <kiocore/Export.h>
#include <kiocore/utility/UTF16String.h>

namespace TR {

using kiocore::UTF16String;

/// Extensions of the files that the host's projects deal with: with their dot, in lower case. File names are
/// compared without regard to case.
///
/// Threading: constants; made when the library is loaded.

// The host's own.
extern KIO_EXPORT const UTF16String kExtensionProject;          // ".hproj"
extern KIO_EXPORT const UTF16String kExtensionProjectBackup;    // ".hprojbackup"
extern KIO_EXPORT const UTF16String kExtensionProjectLock;      // ".hprojlock"
extern KIO_EXPORT const UTF16String kExtensionProjectTemplate;  // ".hprojtemplate"
extern KIO_EXPORT const UTF16String kExtensionSequenceTemplate; // ".hseqtemplate"
extern KIO_EXPORT const UTF16String kExtensionTitleTemplate;    // ".htitletemplate"
extern KIO_EXPORT const UTF16String kExtensionCaptionTemplate;  // ".hcaptiontemplate"

// Captions and subtitles.
extern KIO_EXPORT const UTF16String kExtensionSubRip;              // ".srt"
extern KIO_EXPORT const UTF16String kExtensionWebVTT;              // ".vtt"
extern KIO_EXPORT const UTF16String kExtensionSCC;                 // ".scc"
extern KIO_EXPORT const UTF16String kExtensionMCC;                 // ".mcc"
extern KIO_EXPORT const UTF16String kExtensionEBUSubtitles;        // ".stl"
extern KIO_EXPORT const UTF16String kExtensionTimedText;           // ".ttml"
extern KIO_EXPORT const UTF16String kExtensionDistributionProfile; // ".dfxp"
extern KIO_EXPORT const UTF16String kExtensionSubStation;          // ".ssa"
extern KIO_EXPORT const UTF16String kExtensionAdvancedSubStation;  // ".ass"

// Interchange with others.
extern KIO_EXPORT const UTF16String kExtensionXML;                       // ".xml"
extern KIO_EXPORT const UTF16String kExtensionEditDecisionList;          // ".edl"
extern KIO_EXPORT const UTF16String kExtensionAdvancedAuthoringFormat;   // ".aaf"
extern KIO_EXPORT const UTF16String kExtensionOpenMediaFramework;        // ".omf"
extern KIO_EXPORT const UTF16String kExtensionOpenTimeline;              // ".otio"
extern KIO_EXPORT const UTF16String kExtensionOpenTimelineArchive;       // ".otioz"
extern KIO_EXPORT const UTF16String kExtensionOpenTimelineFolder;        // ".otiod"
extern KIO_EXPORT const UTF16String kExtensionColorDecisionList;         // ".cdl"
extern KIO_EXPORT const UTF16String kExtensionColorCorrectionCollection; // ".ccc"

} // namespace TR
