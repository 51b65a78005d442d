#include "files/raw_run_files.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string_view>
#include <vector>

#include "core/atomic_file.h"
#include "core/config_store.h"
#include "core/errors.h"
#include "core/log.h"
#include "core/platform.h"
#include "core/ui_services.h"
#include "files/summary_run_list.h"
#include "results/track_markers.h"
#include "store/run_procedures.h"
#include "store/run_store.h"

namespace fs = std::filesystem;

namespace tl {

namespace {

const char* const kTooManyRuns =
    "You cannot load all these runs, it would exceed the maximum number of runs allowed";
const char* const kNotRecognised = " is not a recognised run file";
const char* const kOldVersion =
    " cannot be loaded, possibly because it is from an old version of the software. To load a "
    "run from a different version of the software, ensure it is saved as a raw data file "
    "without any analysis.";
const char* const kMixedTypes = "Not all the runs are of the same type";
const char* const kSv63BackwardCompatible =
    "This file is from an old version of the software and is supported for backward "
    "compatibility with the beta test version of the SV63 software, to ensure future "
    "compatibility please save the run from this version of the software";
const char* const kFileLocked =
    "File has been locked by another program or is otherwise inaccessible";
const char* const kLoadFilter = "Run Data Files (*.run )|*.run|Show All Files (*.*)|*.*";
const char* const kSaveFilter = "Run Data Files (*.run)|*.run|Show All Files (*.*)|*.*";

// Session files (Part of the session work) are not read or written by this
// version yet; these are the messages that say so.
std::string SessionLoadNotSupported(const std::string& path) {
    return ExtractFileName(path) +
           " is a session file. Session files are not yet supported by this version of "
           "Tracelab: the file was not loaded and nothing in memory has changed.";
}
const char* const kSessionSaveNotSupported =
    "Session files are not yet supported by this version of Tracelab: nothing was saved. "
    "Save each run as a raw data file instead.";

std::string Num(int64_t v) {
    return std::to_string(v);
}

// frmPleaseWait with the hourglass on every form, both undone on leaving,
// whichever way the procedure is left.
class WaitScope {
  public:
    explicit WaitScope(const std::string& text) {
        ShowPleaseWait(text);
        SetAllMousePointers(11);
    }
    ~WaitScope() {
        SetAllMousePointers(0);
        HidePleaseWait();
    }
    WaitScope(const WaitScope&) = delete;
    WaitScope& operator=(const WaitScope&) = delete;
};

// Menu and toolbar off during a load or save, on again on leaving.
class FormsDisabled {
  public:
    FormsDisabled() { DisableAllForms(); }
    ~FormsDisabled() { EnableAllForms(); }
    FormsDisabled(const FormsDisabled&) = delete;
    FormsDisabled& operator=(const FormsDisabled&) = delete;
};

// A binary file read the way the original's Get did: reads past the end give
// zeros. Every read is bounded by the destination it is given.
class RunFileReader {
  public:
    explicit RunFileReader(const std::string& path) : in_(path, std::ios::binary) {
        std::error_code ec;
        if (in_) {
            auto size = fs::file_size(path, ec);
            size_ = ec ? 0 : static_cast<int64_t>(size);
        }
    }
    bool open() const { return static_cast<bool>(in_.is_open()); }
    int64_t size() const { return size_; }

    // Reads up to count bytes at offset into dest; the rest of dest's count
    // is set to 0. Returns the bytes actually read.
    int64_t ReadAt(int64_t offset, uint8_t* dest, int64_t count) {
        int64_t got = 0;
        if (count <= 0) return 0;
        if (open() && offset < size_) {
            in_.clear();
            in_.seekg(offset);
            in_.read(reinterpret_cast<char*>(dest), static_cast<std::streamsize>(count));
            got = std::max<int64_t>(0, in_.gcount());
        }
        if (got < count) std::memset(dest + got, 0, static_cast<size_t>(count - got));
        return got;
    }
    int32_t ReadInt32At(int64_t offset) {
        uint8_t b[4];
        ReadAt(offset, b, 4);
        return static_cast<int32_t>(
            static_cast<uint32_t>(b[0]) | (static_cast<uint32_t>(b[1]) << 8) |
            (static_cast<uint32_t>(b[2]) << 16) | (static_cast<uint32_t>(b[3]) << 24));
    }

  private:
    std::ifstream in_;
    int64_t size_ = 0;
};

// The message of a failed family check.
std::string IncompatibleMessage(int32_t fileType) {
    return std::string(
               "This version of the Tracelab software and the Run file are incompatible. "
               "This version of Tracelab if for the ") +
           FamilyWord(Profile().family()) + ", but the run is from a " +
           FamilyWord(FamilyOfRunFileType(fileType)) + ". Loading will be terminated.";
}

std::string Damaged(const std::string& path, const std::string& why) {
    return ExtractFileName(path) + " is damaged and cannot be loaded: " + why +
           ". Nothing in memory has changed.";
}

// The checks every raw loader makes before it touches the store: the RawData
// shape of this build, and a free RunInfo record.
bool StoreCanTakeRun(const std::string& path, bool planeFile, int32_t fileType) {
    RunStore& s = Store();
    if (s.RawData.planes() != planeFile || Profile().family() == Family::None) {
        Message(IncompatibleMessage(fileType) + " (" + ExtractFileName(path) + ")");
        return false;
    }
    if (s.RunCount >= kMaxRunsLoaded || s.RunCount >= kLastRunRecord) {
        Message(kTooManyRuns);
        return false;
    }
    return true;
}

// Adds the record of a new run whose raw stretch holds rawCount indices
// (RawEnd = RawStart + rawCount - 1): RunCount rises, the markers' per-run
// arrays grow, the record gets its stretch and name.
void AddRawRun(const std::string& path, int64_t rawCount) {
    RunStore& s = Store();
    s.RunCount += 1;
    LogDebug("Expanding the runs for all nodes after loading a new run - new run count" +
             Num(s.RunCount));
    Markers().ResizeRuns(s.RunCount);
    LogDebug("Allocating new runinfo information for loaded run");
    RunRecord& r = s.RunInfo[s.RunCount];
    r = RunRecord{};
    r.RawStart = s.RunCount == 1 ? 0 : s.RunInfo[s.RunCount - 1].RawEnd + 1;
    r.RawEnd = static_cast<int32_t>(r.RawStart + rawCount - 1);
    r.Name = ExtractFileName(path);
}

void TakeBackRun() {
    RunStore& s = Store();
    s.RunInfo[s.RunCount] = RunRecord{};
    s.RunCount -= 1;
    Markers().ResizeRuns(s.RunCount);
}

// After PreserveRawData: is the new stretch really there? (A failed
// allocation is a trapped run-time error inside PreserveRawData, so it can
// come back without the room.)
bool RawRoomMade(const std::string& path) {
    const RunStore& s = Store();
    const RunRecord& r = s.RunInfo[s.RunCount];
    if (s.RawData.UpperIndex() >= r.RawEnd) return true;
    TakeBackRun();
    Message("There is not enough memory to load " + ExtractFileName(path) +
            ". Nothing in memory has changed.");
    return false;
}

enum class Attempt { Done, Restart };

// Splits the original's NUL-separated selection: one element is a file with
// its path; with more, element 0 is the directory and the others are names in
// it. Empty trailing elements (the end of the buffer) are dropped.
std::vector<std::string> SplitSelection(const std::string& text, size_t& elementCount) {
    std::vector<std::string> parts;
    size_t start = 0;
    for (;;) {
        size_t nul = text.find('\0', start);
        parts.push_back(text.substr(start, nul == std::string::npos ? nul : nul - start));
        if (nul == std::string::npos) break;
        start = nul + 1;
    }
    while (parts.size() > 1 && parts.back().empty()) parts.pop_back();
    elementCount = parts.size();
    if (parts.size() == 1) return parts;
    std::vector<std::string> files;
    for (size_t i = 1; i < parts.size(); ++i)
        files.push_back((fs::path(parts[0]) / parts[i]).string());
    return files;
}

void AfterRawLoad(bool process, ProcessLoadedRun processRun) {
    const int32_t run = Store().RunCount;
    if (!process) {
        LogDebug("dont preprocess, but allocate memory in the run data array");
        AllocateRunArray(run);
        // The allocation leaves its last wait text ("Copy Data To Memory")
        // up; with no conversion behind it nothing else would take it down.
        HidePleaseWait();
    } else {
        LogDebug("reprocess the run as requested");
        AllocateRunArray(run);
        if (processRun) processRun(run);
    }
}

Attempt LoadAttempt(const std::string& path, ProcessLoadedRun processRun) {
    LogDebug("Load a data file from disk");
    LogDebug("file to load input string= " + path);

    std::vector<std::string> files;
    int64_t newRuns = 1;
    if (path.empty()) {
        FileDialogRequest request;
        request.title = "Load A Run From Disk";
        request.filter = kLoadFilter;
        request.initialDir = GetConfigString(Paths().TracelabCfgPath, "RunPath");
        request.multiSelect = true;
        files = CurrentPlatform().files->OpenFiles(request);
        if (files.empty()) {
            LogDebug("Run load was cancelled by user");
            return Attempt::Done;
        }
        // The original's dialog returned "directory NUL name NUL name ..." for
        // a multiple selection, and counted the new runs as the upper index of
        // that list less 1: one file counts as 1, k > 1 files as k - 1 (one
        // fewer than there are, a quirk kept deliberately). The dialog here
        // returns full paths; the count follows the same rule.
        newRuns = files.size() == 1 ? 1 : static_cast<int64_t>(files.size()) - 1;
    } else {
        size_t elements = 0;
        files = SplitSelection(path, elements);
        newRuns = elements == 1 ? 1 : static_cast<int64_t>(elements) - 2;
    }

    RunStore& s = Store();
    if (s.RunCount + newRuns >= kMaxRunsLoaded) {
        Message(kTooManyRuns);
        return Attempt::Restart;
    }

    // Every file is tested before any is loaded.
    int32_t firstType = 0;
    for (size_t i = 0; i < files.size(); ++i) {
        const std::string& file = files[i];
        LogDebug("Checking suitability of file : " + file);
        RunFileHead head;
        ReadRunFileHead(file, head);  // an unreadable file reads as magic 0
        LogDebug("Returned: " + Num(head.magic) + "   " + Num(head.type));
        if (head.magic != kRunFileMagic) {
            Message(ExtractFileName(file) + kNotRecognised);
            return Attempt::Restart;
        }
        if (!IsKnownRunFileType(head.type)) {
            Message(file + kOldVersion);
            return Attempt::Restart;
        }
        if (i == 0) {
            firstType = head.type;
        } else if (head.type != firstType) {
            Message(kMixedTypes);
            return Attempt::Restart;
        }
    }

    bool process = false;
    if (IsRawRunFileType(firstType)) {
        if (files.size() == 1)
            process =
                YesNoBox("Process File",
                         "Do you want to process the raw file automatically once it is loaded?");
        else
            process =
                YesNoBox("Process Files", "Do you want to process raw files as they are loaded?");
    } else if (s.RunCount > 0) {
        if (!YesNoBox("Continue Load", "Loading " + files.front() +
                                           " will overwrite all the existing data and analysis do "
                                           "you wish to continue?"))
            return Attempt::Restart;
    }

    LogDebug("now loading the files....");
    FormsDisabled frozen;
    for (const std::string& file : files) {
        LogDebug("File to load is : " + file);
        RunFileHead head;
        ReadRunFileHead(file, head);
        if (!CheckFileHarwardwareCompatibility(head.type)) continue;
        switch (head.type) {
            case kFileTypeRawHX40:
            case kFileTypeRawSV63:
                if (LoadRawDataFromFileHX40(file)) AfterRawLoad(process, processRun);
                break;
            case kFileTypeRawMQ7:
            case kFileTypeRawSW63:
                if (LoadRawDataFromFileMQ7(file)) AfterRawLoad(process, processRun);
                break;
            case kFileTypeSummarySV63:
                LoadSummaryRunDataFromFile(file);
                break;
            default:
                // Session files (7, 8, 9, 10).
                Message(SessionLoadNotSupported(file));
                break;
        }
    }
    // The original tested for "You have now loaded the maximum number of runs
    // into memory" behind this loop with the finished loop index, so the
    // message never showed; the next load is refused by the capacity check.
    return Attempt::Done;
}

}  // namespace

bool ReadRunFileHead(const std::string& path, RunFileHead& head) {
    RunFileReader in(path);
    head.magic = in.ReadInt32At(0);
    head.type = in.ReadInt32At(4);
    return in.open();
}

bool IsKnownRunFileType(int32_t type) {
    switch (type) {
        case 1:
        case 7:
        case 8:
        case 9:
        case 10:
        case 101:
        case 200:
        case 201:
        case 202:
            return true;
        default:
            return false;
    }
}

bool IsRawRunFileType(int32_t type) {
    return type == kFileTypeRawHX40 || type == kFileTypeRawMQ7 || type == kFileTypeRawSW63 ||
           type == kFileTypeRawSV63;
}

bool IsPlaneRunFileType(int32_t type) {
    return type == kFileTypeRawHX40 || type == kFileTypeRawSV63;
}

bool IsSessionRunFileType(int32_t type) {
    return type >= 7 && type <= 10;
}

Family FamilyOfRunFileType(int32_t type) {
    switch (type) {
        case kFileTypeRawHX40:
        case kFileTypeSessionHX40:
            return Family::HX40;
        case kFileTypeRawMQ7:
        case kFileTypeSessionMQ7:
            return Family::MQ7;
        case kFileTypeRawSW63:
        case kFileTypeSessionSW63:
            return Family::SW63;
        case kFileTypeRawSV63:
        case kFileTypeSessionSV63:
        case kFileTypeSummarySV63:
            return Family::SV63;
        default:
            return Family::None;
    }
}

int32_t RawRunFileTypeOf(Family family) {
    switch (family) {
        case Family::HX40:
            return kFileTypeRawHX40;
        case Family::MQ7:
            return kFileTypeRawMQ7;
        case Family::SV63:
            return kFileTypeRawSV63;
        case Family::SW63:
            return kFileTypeRawSW63;
        case Family::None:
            break;
    }
    return 0;
}

void LoadDataFromFile(const std::string& path, ProcessLoadedRun processRun) {
    Procedure("LoadDataFromFile", [&] {
        // The original restarted itself by calling itself with an empty path
        // after every refusal; the loop does the same without a deeper stack
        // at each refusal.
        std::string next = path;
        while (LoadAttempt(next, processRun) == Attempt::Restart) next.clear();
    });
}

bool CheckFileHarwardwareCompatibility(int32_t fileType) {
    return ProcedureValue("CheckFileHarwardwareCompatibility", false, [&] {
        LogDebug("Check the hardware cmpatibility of the file type and the software");
        const Family build = Profile().family();
        bool pass = build != Family::None && FamilyOfRunFileType(fileType) == build;
        if (!pass && build == Family::SV63 &&
            (fileType == kFileTypeRawHX40 || fileType == kFileTypeSessionHX40)) {
            Message(kSv63BackwardCompatible);
            pass = true;
        }
        if (!pass) Message(IncompatibleMessage(fileType));
        LogDebug(pass ? "File type match" : "File type fail");
        return pass;
    });
}

bool LoadRawDataFromFileHX40(const std::string& path) {
    return ProcedureValue("LoadRawDataFromFileHX40", false, [&] {
        LogDebug("Loading a raw data file from disk");
        WaitScope wait("Loading Raw Data File From Disk");
        RunFileReader in(path);
        if (!in.open()) {
            Message(ExtractFileName(path) + kNotRecognised);
            return false;
        }
        const int32_t fileType = in.ReadInt32At(4);
        const int32_t samples = in.ReadInt32At(8);
        LogDebug("file Length: " + Num(samples));

        // A file shorter than it claims reads zeros, as it always did; but a
        // count that cannot be true is refused before anything is allocated,
        // and so is a file holding less than half of what it claims (the
        // zeros would then outweigh the data, and the memory they take would
        // be the file's to choose).
        const int64_t claimed = 8 * (int64_t{samples} + 1);
        const int64_t held = std::max<int64_t>(0, in.size() - 12);
        if (samples < 0) {
            Message(Damaged(path, "it claims a negative number of samples (" + Num(samples) + ")"));
            return false;
        }
        if (samples > kMaxPlaneSamples) {
            Message(Damaged(path, "it claims " + Num(samples) +
                                      " samples, more than any logger holds (at most " +
                                      Num(kMaxPlaneSamples) + ")"));
            return false;
        }
        if (held * 2 < claimed) {
            Message(Damaged(path, "it claims " + Num(samples) + " samples in " + Num(claimed) +
                                      " bytes but holds only " + Num(held)));
            return false;
        }
        if (!StoreCanTakeRun(path, true, fileType)) return false;

        // RawEnd = RawStart + N - 1.
        AddRawRun(path, samples);
        LogDebug("allocate sufficient space in the raw data array");
        RunStore& s = Store();
        PreserveRawData(s.RunInfo[s.RunCount].RawEnd);
        if (!RawRoomMade(path)) return false;
        RunRecord& r = s.RunInfo[s.RunCount];

        // The planes go straight into their stretch of RawData: vector v's
        // samples are one contiguous block in both the file and the store, so
        // no temporary copy of the run is needed.
        LogDebug("load the run into a temporary data array");
        std::array<uint8_t, 8> header{};
        for (int v = 1; v <= 8; ++v) {
            const int64_t planeOffset = 12 + int64_t{v - 1} * (int64_t{samples} + 1);
            in.ReadAt(planeOffset, &header[v - 1], 1);
            if (samples > 0)
                in.ReadAt(planeOffset + 1, s.RawData.Vector(v).data() + r.RawStart, samples);
        }
        LogDebug("load the new data into the raw data array");
        r.HeaderBytes = header;
        return true;
    });
}

bool LoadRawDataFromFileMQ7(const std::string& path) {
    return ProcedureValue("LoadRawDataFromFileMQ7", false, [&] {
        LogDebug("Loading a raw MQ7 data file from disk");
        WaitScope wait("Loading Raw Data File");
        RunFileReader in(path);
        if (!in.open()) {
            Message(ExtractFileName(path) + kNotRecognised);
            return false;
        }
        const int64_t length = in.size() - 8;
        LogDebug("The file length is: " + Num(length));
        const int32_t fileType = in.ReadInt32At(4);
        if (length < 0) {
            Message(Damaged(path, "it is shorter than the head of a run file"));
            return false;
        }
        if (length > kMaxStreamBytes) {
            Message(Damaged(path, "it holds " + Num(length) +
                                      " bytes, more than any logger holds (at most " +
                                      Num(kMaxStreamBytes) + ")"));
            return false;
        }
        if (!StoreCanTakeRun(path, false, fileType)) return false;
        CheckMemoryAvailable(static_cast<double>(length));

        // RawEnd = RawStart + L: one index more than the bytes of the file;
        // that last byte stays 0.
        AddRawRun(path, length + 1);
        LogDebug("Expand the raw array to take the new data");
        RunStore& s = Store();
        PreserveRawData(s.RunInfo[s.RunCount].RawEnd);
        if (!RawRoomMade(path)) return false;
        RunRecord& r = s.RunInfo[s.RunCount];

        // The original read the file into a temporary array and copied it to
        // RawStart; here the bytes go straight to their place. The wait texts
        // and log lines of the three steps are kept.
        ShowPleaseWait("Allocate Memory For File");
        LogDebug("Allocate an array to take the new data, time=" + std::to_string(Timer()));
        ShowPleaseWait("Load File");
        LogDebug("Load the file, time=" + std::to_string(Timer()));
        uint8_t* stretch = s.RawData.Vector(1).data() + r.RawStart;
        in.ReadAt(8, stretch, length);
        ShowPleaseWait("Copy Data To Memory");
        LogDebug("Copy the data to memory, time=" + std::to_string(Timer()));
        // The stream never shrinks, so a deleted run's bytes may lie here.
        stretch[length] = 0;
        LogDebug("Free the temporary array, time=" + std::to_string(Timer()));
        // A stream run carries its header inside the stream.
        r.HeaderBytes = {};
        return true;
    });
}

bool LoadSummaryRunDataFromFile(const std::string& path) {
    return ProcedureValue("LoadSummaryRunDataFromFile", false, [&] {
        LogDebug("Loading a raw data file from disk");
        WaitScope wait("Loading Raw Data File From Disk");
        RunFileReader in(path);
        if (!in.open()) {
            Message(ExtractFileName(path) + kNotRecognised);
            return false;
        }
        const int32_t upper = in.ReadInt32At(8);
        LogDebug("file Length: " + Num(upper));
        if (upper < 0 || upper >= kMaxSummaryBytes) {
            Message(Damaged(path, "it claims " + Num(int64_t{upper} + 1) +
                                      " bytes of summary data (a summary run holds " +
                                      Num(kSummaryRunBytes) + ")"));
            return false;
        }
        SummaryRunRecord record;
        record.Name = ExtractFileName(path);
        record.Bytes.resize(static_cast<size_t>(upper) + 1);
        in.ReadAt(12, record.Bytes.data(), upper + 1);
        SummaryRuns().Add(std::move(record));
        return true;
    });
}

void SaveDataToFile(int32_t run) {
    Procedure("SaveDataToFile", [&] {
        LogDebug("--------------saving data to disk-----------------");
        if (run > Store().RunCount) {
            LogDebug("illegal run number for saving!");
            return;
        }
        if (run <= 0) {
            // The session file (run 0, or -1 from the menu). Said before the
            // dialog, so that no file is chosen or created for nothing.
            Message(kSessionSaveNotSupported);
            return;
        }
        for (;;) {
            LogDebug("Opening Save Dialog");
            FileDialogRequest request;
            request.title = "Save Run Data";
            request.filter = kSaveFilter;
            request.initialDir = GetConfigString(Paths().TracelabCfgPath, "RunPath");
            request.overwritePrompt = true;
            std::optional<std::string> chosen = CurrentPlatform().files->SaveFile(request);
            if (!chosen || chosen->empty()) {
                LogDebug("save was cancelled");
                return;
            }
            const std::string& target = *chosen;
            LogDebug("Data to be saved to : " + target);
            std::error_code ec;
            const bool existed = fs::exists(target, ec);
            if (!FileWriteable(target)) {
                Message(kFileLocked);
                continue;
            }
            LogDebug("All is well, so write the file");
            LogDebug("Write to a raw file");
            if (!SaveRawDataToFile(run, target) && !existed) {
                // FileWriteable created the file to test it; nothing was saved.
                if (fs::is_regular_file(target, ec) && fs::file_size(target, ec) == 0)
                    DeleteFileIfPresent(target);
            }
            LogDebug("Save Completed");
            return;
        }
    });
}

bool SaveRawDataToFile(int32_t run, const std::string& path) {
    return ProcedureValue("SaveRawDataToFile", false, [&] {
        RunStore& s = Store();
        if (run < 1 || run > s.RunCount) {
            LogDebug("illegal run number for saving!");
            return false;
        }
        if (!FileWriteable(path)) {
            Message(kFileLocked);
            return false;
        }
        LogDebug("load the data to save into a temporary data array");
        const RunRecord& r = s.RunInfo[run];
        const bool planes = s.RawData.planes();
        const int32_t fileType = RawRunFileTypeOf(Profile().family());
        // Plane files: N = RawEnd - RawStart + 1 samples behind each header
        // byte. Stream files: RawEnd - RawStart bytes, so the zero byte the
        // load added at the end is dropped and the file is as it was.
        const int64_t count =
            planes ? int64_t{r.RawEnd} - r.RawStart + 1 : int64_t{r.RawEnd} - r.RawStart;
        if (fileType == 0 || r.RawStart < 0 || count < 0 ||
            int64_t{r.RawStart} + count - 1 > s.RawData.UpperIndex()) {
            Message("Run " + Num(run) + " cannot be saved: its raw data are not in memory.");
            return false;
        }

        FormsDisabled frozen;
        // The bytes go to a temporary file beside the target, which replaces
        // the target only once complete: a failed save leaves the old file
        // as it was, and a shorter save keeps none of the old file's tail.
        AtomicFileWriter out(path);
        LogDebug("open the file to Save to as #1");
        LogDebug("Save file header");
        out.WriteInt32(kRunFileMagic);
        out.WriteInt32(fileType);
        if (planes) out.WriteInt32(static_cast<int32_t>(count));
        LogDebug("Save the temporary data to file");
        if (planes) {
            for (int v = 1; v <= 8; ++v) {
                out.WriteByte(r.HeaderBytes[v - 1]);
                if (count > 0)
                    out.Write(s.RawData.Vector(v).data() + r.RawStart, static_cast<size_t>(count));
            }
        } else if (count > 0) {
            out.Write(s.RawData.Vector(1).data() + r.RawStart, static_cast<size_t>(count));
        }
        LogDebug("close the file");
        if (!out.Commit()) {
            Message("The run could not be saved to " + path + ": " + out.error() +
                    ". The file on disk has not been changed.");
            return false;
        }
        LogDebug("clear the temp raw data array");
        return true;
    });
}

bool WriteSummaryRunFile(const std::string& path, std::span<const uint8_t> bytes,
                         std::string& error) {
    AtomicFileWriter out(path);
    out.WriteInt32(kRunFileMagic);
    out.WriteInt32(kFileTypeSummarySV63);
    out.WriteInt32(static_cast<int32_t>(bytes.size()) - 1);
    out.Write(bytes.data(), bytes.size());
    if (out.Commit()) return true;
    error = out.error();
    return false;
}

}  // namespace tl
