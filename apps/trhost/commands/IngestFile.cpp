#include "IngestFile.h"

#include "../support/CacheFileKinds.h"
#include "../support/DocumentIdentity.h"
#include "../support/Failure.h"
#include "../support/HostSession.h"
#include "../support/Interrupt.h"
#include "../support/KeptText.h"
#include "../support/MediaLoader.h"
#include "../support/MediaSummary.h"
#include "../support/Records.h"

#include <MF/FileManager.h>
#include <TR/MediaAcceleratorDatabase.h>
#include <ZOL/File.h>
#include <kiocore/config/Errors.h>
#include <kiocore/filesupport/AtomicFile.h>
#include <kiocore/filesupport/NativePath.h>
#include <kiocore/threads/Clock.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <memory>
#include <set>
#include <utility>

namespace trhost {

namespace {

using kiocore::utility::ToUTF16;

/// One cache file that belongs to the media.
struct Planned {
    UTF16String streamID;
    UTF16String key;
    UTF16String path;
    std::string reason;   // why it cannot be made
    media::Output output; // for the media module
    bool wanted = true;   // false: recorded and up to date
};

class ProgressForwarder final : public media::IProgress {
public:
    explicit ProgressForwarder(const std::function<void(double)>& inProgress) : mProgress(inProgress) {}
    void Progressed(double inFraction) override { mProgress(inFraction); }

private:
    const std::function<void(double)>& mProgress;
};

/// Everything about one media file on its way through.
class Ingestion {
public:
    Ingestion(DocumentIdentity inIdentity, bool inForce, const std::function<void(double)>& inProgress)
        : mIdentity(std::move(inIdentity)), mForce(inForce), mProgress(inProgress)
    {}

    IngestOutcome Run()
    {
        if (!mForce && IsUpToDate()) {
            return std::move(mOutcome);
        }
        Make();
        return std::move(mOutcome);
    }

private:
    bool IsUpToDate();
    void Make();
    void Open();
    void Plan();
    void PlanStream(const media::StreamInfo& inStream, media::OutputKind inKind, const char16_t* inKey,
                    const UTF16String& inFolder, const char16_t* inExtension);
    void Conform();
    void ThrowIfMediaChanged();
    void RecordItem(const UTF16String& inStreamID, const UTF16String& inKey, const UTF16String& inPath);
    void SaveSummary();
    void DeleteReplacedFiles();
    bool FindsUpToDate(const UTF16String& inStreamID, const UTF16String& inKey, UTF16String& outPath);

    const DocumentIdentity mIdentity;
    const bool mForce;
    const std::function<void(double)>& mProgress;
    TR::MediaAcceleratorDatabase mDatabase; // what it stores is the process's; any instance serves

    std::optional<Record> mBefore;
    std::unique_ptr<media::IMediaFile> mMedia;
    UTF16String mFolder;
    std::vector<Planned> mPlan;
    UTF16String mSummaryPath;
    MediaSummary mSummary;
    IngestOutcome mOutcome;
};

bool Ingestion::FindsUpToDate(const UTF16String& inStreamID, const UTF16String& inKey, UTF16String& outPath)
{
    return mDatabase.FindUpToDate(mIdentity.documentID, mIdentity.contentState, inStreamID, inKey, outPath) ==
           0;
}

bool Ingestion::IsUpToDate()
{
    UTF16String path;
    if (!FindsUpToDate(kStream_Media, kKey_MediaSummary, path)) {
        return false;
    }
    const auto summary = MediaSummary::Load(path);
    if (!summary) {
        return false;
    }
    for (const MediaSummary::Item& item : summary->items) {
        if (item.reason.empty() && !FindsUpToDate(item.streamID, item.key, path)) {
            return false;
        }
    }
    mOutcome.kind = summary->reason.empty() ? IngestOutcome::Kind::kUpToDate : IngestOutcome::Kind::kSkipped;
    mOutcome.reason = ToUTF16(ToldText(summary->reason));
    return true;
}

void Ingestion::Make()
{
    if (TR::GetMediaAcceleratorDirectoryPath(mIdentity.path, mFolder) < 0) {
        throw Failure(kExit_Failed,
                      Text("$$$/Halcyon/TrHost/NoCacheFolder=the preferences name no folder for cache "
                           "files; see trhost prefs show"));
    }
    MakeFolder(mFolder);
    MakeFolder(PeakFilesFolder());
    MakeFolder(PreferredFolder(&BE::IPreferences::GetMediaCacheDatabaseFolder));
    mBefore = FindRecord(mIdentity.documentID);
    mSummaryPath = CacheFilePath(mFolder, mIdentity.path, mIdentity.documentID, {}, u".ccjson");

    try {
        Open();
        Plan();
        Conform();
    } catch (const kiocore::kio_exception& error) {
        if (error.Code() != media::kMediaError_NotMedia &&
            error.Code() != media::kMediaError_NothingDecoded) {
            throw;
        }
        // Recorded as well, so that the media libraries are not brought up for this file every time.
        mPlan.clear();
        mSummary.reason = error.what();
    }
    // From here on nothing takes long, so an interruption is not looked at: all or nothing is recorded.
    ThrowIfMediaChanged();
    SaveSummary();
    for (const Planned& planned : mPlan) {
        if (planned.wanted && planned.reason.empty()) {
            RecordItem(planned.streamID, planned.key, planned.path);
            mOutcome.files.push_back(planned.path);
        }
    }
    RecordItem(kStream_Media, kKey_MediaSummary, mSummaryPath);
    DeleteReplacedFiles();
    mOutcome.kind = mSummary.reason.empty() ? IngestOutcome::Kind::kMade : IngestOutcome::Kind::kSkipped;
    mOutcome.reason = ToUTF16(ToldText(mSummary.reason));
}

void Ingestion::Open()
{
    mMedia = LoadMediaModule().Open(kiocore::filesupport::ToNative(mIdentity.path), InterruptCancel());
    mSummary.container = mMedia->Container();
    mSummary.durationSeconds = mMedia->DurationSeconds();
    for (const media::StreamInfo& stream : mMedia->Streams()) {
        mSummary.streams.push_back(
            {stream.index, stream.kind == media::StreamKind::kAudio ? "audio" : "video", stream.codec,
             stream.sampleRate, stream.channels, stream.width, stream.height, stream.framesPerSecond,
             stream.durationSeconds, stream.language});
    }
}

void Ingestion::Plan()
{
    const UTF16String peaks = PeakFilesFolder();
    for (const media::StreamInfo& stream : mMedia->Streams()) {
        switch (stream.kind) {
        case media::StreamKind::kAudio:
            PlanStream(stream, media::OutputKind::kConformedAudio, kKey_ConformedAudio, mFolder, u".cfa");
            PlanStream(stream, media::OutputKind::kPeaks, kKey_PeakFile, peaks, u".pek");
            break;
        case media::StreamKind::kVideo:
            PlanStream(stream, media::OutputKind::kVideoIndex, kKey_VideoIndex, mFolder, u".mcvideoindex");
            break;
        }
    }
    const bool any =
        std::any_of(mPlan.begin(), mPlan.end(), [](const Planned& p) { return p.reason.empty(); });
    if (!any) {
        mSummary.reason = mPlan.empty()
                              ? "$$$/Halcyon/TrHost/Media/NoAudioNoVideo=no audio and no video in it"
                              : mPlan.front().reason;
    }
}

void Ingestion::PlanStream(const media::StreamInfo& inStream, media::OutputKind inKind, const char16_t* inKey,
                           const UTF16String& inFolder, const char16_t* inExtension)
{
    Planned planned;
    planned.streamID = kiocore::utility::DecimalText(static_cast<unsigned long long>(inStream.index));
    planned.key = inKey;
    if (!inStream.decodable) {
        planned.reason =
            KeptText("$$$/Halcyon/TrHost/Media/NoDecoder=no decoder for @0#{@0: a codec}", {inStream.codec});
        planned.wanted = false;
    } else if (!mForce && FindsUpToDate(planned.streamID, planned.key, planned.path)) {
        planned.wanted =
            false; // left by a run that was interrupted, or by someone who deleted its neighbours
    } else {
        planned.path =
            CacheFilePath(inFolder, mIdentity.path, mIdentity.documentID, planned.streamID, inExtension);
        planned.output = {inKind, inStream.index, kiocore::filesupport::ToNative(planned.path)};
    }
    mPlan.push_back(std::move(planned));
}

/// Files that are replaced under their names need not be forgotten first: the database drops what was written
/// since it was recorded when it reads the record.
void Ingestion::Conform()
{
    std::vector<media::Output> outputs;
    std::vector<Planned*> made;
    for (Planned& planned : mPlan) {
        if (planned.wanted) {
            outputs.push_back(planned.output);
            made.push_back(&planned);
        }
    }
    if (outputs.empty()) {
        return;
    }
    ProgressForwarder progress(mProgress);
    media::ConformResult result = mMedia->Conform(outputs, &progress, InterruptCancel());
    for (std::size_t i = 0; i < made.size() && i < result.outputs.size(); ++i) {
        if (!result.outputs[i].made) {
            made[i]->reason = result.outputs[i].reason.empty()
                                  ? "$$$/Halcyon/TrHost/Media/NothingDecodedOfStream=nothing could be decoded"
                                  : result.outputs[i].reason;
        }
    }
    mOutcome.warnings = std::move(result.warnings);
}

/// Cache files of media that was written to meanwhile are of neither state.
void Ingestion::ThrowIfMediaChanged()
{
    mMedia.reset();
    if (IdentifyDocument(mIdentity.path).contentState != mIdentity.contentState) {
        throw Failure(kExit_Failed,
                      Text("$$$/Halcyon/TrHost/MediaChanged=it changed while it was read; try again once "
                           "it is complete"));
    }
}

void Ingestion::RecordItem(const UTF16String& inStreamID, const UTF16String& inKey, const UTF16String& inPath)
{
    if (mDatabase.Add(mIdentity.documentID, mIdentity.contentState, mIdentity.path, inStreamID, inKey, inPath,
                      true) < 0) {
        throw Failure(kExit_Failed,
                      Text("$$$/Halcyon/TrHost/NotRecorded=the cache file @0 is complete, but its record "
                           "@1 could not be saved",
                           {inPath, RecordPaths(mIdentity.documentID).front()}));
    }
}

/// The summary names what a complete record holds, and each item is asked for by name, so it does not matter
/// after which of the steps that follow we are stopped: what is missing then is seen to be missing.
void Ingestion::SaveSummary()
{
    for (const Planned& planned : mPlan) {
        mSummary.items.push_back({planned.streamID, planned.key, planned.reason});
    }
    const std::string bytes = mSummary.GetBytes();
    if (const auto before = MediaSummary::Load(mSummaryPath); before && before->GetBytes() == bytes) {
        return; // a file that says the same keeps the time under which it may be recorded
    }
    const auto saved = kiocore::filesupport::SaveFileAtomically(mSummaryPath, bytes,
                                                                kiocore::filesupport::Durability::kNone);
    if (saved.result < 0) {
        throw Failure(kExit_Failed, Text("$$$/Halcyon/TrHost/NotSaved=@0 could not be saved: @1",
                                         {mSummaryPath, kiocore::SystemErrorText(saved.errorNumber)}));
    }
}

/// What the earlier record named, and no record names any more.
void Ingestion::DeleteReplacedFiles()
{
    if (!mBefore) {
        return;
    }
    std::set<UTF16String> paths{mSummaryPath};
    std::set<std::pair<UTF16String, UTF16String>> items{{kStream_Media, kKey_MediaSummary}};
    for (const Planned& planned : mPlan) {
        paths.insert(planned.path);
        items.emplace(planned.streamID, planned.key);
    }
    const bool otherState = mBefore->contentState != mIdentity.contentState;
    for (const RecordedItem& item : mBefore->items) {
        const bool replaced = otherState || items.contains({item.streamID, item.key});
        // A file that was written since it was recorded is not the one that was recorded.
        if (replaced && item.state == ItemState::kPresent && !paths.contains(item.path)) {
            MF::FileManager::TryToCloseFileWithoutBlocking(item.path);
            ZOL::File::Delete(item.path);
        }
    }
}

UTF16String ReasonOf(const kiocore::kio_exception& inError)
{
    if (inError.Code() != kiocore::kError_DamagedData) {
        return Told(inError);
    }
    return Text(
        "$$$/Halcyon/TrHost/DamagedRecord=@0; \"trhost cache verify --repair\" sets damaged records aside",
        {Told(inError)});
}

} // namespace

IngestOutcome IngestFile(const UTF16String& inPath, bool inForce,
                         const std::function<void(double)>& inProgress) noexcept
{
    using Kind = IngestOutcome::Kind;
    auto& clock = kiocore::threads::GetClock();
    const auto start = clock.SteadyTime();
    IngestOutcome outcome;
    try {
        if (!IsInterrupted()) {
            DocumentIdentity identity = IdentifyDocument(inPath);
            if (!identity.isReadable) {
                outcome.kind = Kind::kFailed;
                outcome.reason = Text("$$$/Halcyon/TrHost/MediaUnreadable=cannot be read: @0",
                                      {kiocore::SystemErrorText(identity.errorNumber)});
            } else {
                outcome = Ingestion(std::move(identity), inForce, inProgress).Run();
            }
        }
    } catch (const kiocore::kio_exception& error) {
        outcome = {};
        outcome.kind = error.Code() == kiocore::kError_Cancelled ? Kind::kCancelled : Kind::kFailed;
        outcome.reason = ReasonOf(error);
    } catch (const Failure& failure) {
        outcome = {};
        outcome.kind = Kind::kFailed;
        outcome.reason = failure.GetText();
    } catch (const std::exception& error) {
        outcome = {};
        outcome.kind = Kind::kFailed;
        outcome.reason = Told(error);
    }
    outcome.seconds = std::chrono::duration<double>(clock.SteadyTime() - start).count();
    return outcome;
}

} // namespace trhost
