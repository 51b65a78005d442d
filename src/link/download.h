// frmDownloadControl's engine: the logger's run directory, the adaptive
// download of one run, and the two flows behind DownloadBtn (HX40 and SV63).
//
// A form drives a DownloadControl: FormLoad fills runs (the RunListBox rows,
// each with its tick), the form shows caption and progress (the
// DownloadProgressLbl text) whenever onRefresh is called, AbortBtn sets
// Link().AbortFlag, and DownloadBtn calls DownloadSelected. The option dialog
// (DownloadOptionFrm) is asked through chooseOption.
//
// A partial or aborted run never stays: the flows take it out of memory, and
// no file is written for it.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "core/build_profile.h"

namespace tl {

// One record of the reply to "N": 13 bytes, the directory closed by five
// zero bytes.
struct ListedRun {
    int type = 0;               // SV63 run type; 0 a continuous run
    int number = 0;             // counted from 0
    int32_t endAddress = 0;     // big-endian, bytes 1 to 3
    int32_t RunByteLength = 0;  // in 8-byte frames
    uint8_t sampleByte = 0;
    std::string timeText;  // empty when the record has no GPS time
    std::string line;      // the RunListBox text
    bool ticked = false;
};

// The records of a complete directory reply (13 n + 5 bytes).
std::vector<ListedRun> ParseRunDirectory(const std::vector<uint8_t>& reply, Family family);
// The RunListBox text of a run (empty for an SV63 type that gets no line).
std::string RunListLine(const ListedRun& run, Family family);

// DownloadOptionFrm's choices.
enum class DownloadOption {
    Cancel = 0,
    SaveEachToDisk = 1,
    IntoMemory = 2,
    IntoMemoryAndProcess = 3
};

// The packet size's bounds: 32-byte packets, at most 255 to a transfer.
inline constexpr int kPacketBytes = 32;
inline constexpr int kDefaultPacketCount = 255;

struct DownloadControl {
    // --- what the form shows ---
    std::string caption;
    std::string DownloadProgressLbl;
    std::vector<ListedRun> runs;  // RunListBox, one row per record
    int32_t ListedRunCount = 0;   // -1 after a time-out while reading the directory
    // --- what the form supplies ---
    // DownloadOptionFrm, shown modally with more than one run ticked.
    std::function<DownloadOption()> chooseOption = [] { return DownloadOption::Cancel; };
    // ConvertRawToRunData (it lives above this room).
    void (*convertRun)(int32_t run) = nullptr;
    // Called when caption or progress changed; the form repaints.
    std::function<void()> onRefresh;
    // Stands for the options file's "RunPath" when not empty (tracelab-cli -o).
    std::string runPathOverride;
    // --- results ---
    // The files written by the save-each flow, with each run's list index,
    // length in bytes (frames x 8) and PacketCount at its end.
    struct SavedRun {
        int index = 0;
        int64_t bytes = 0;
        int packetCount = 0;
        std::string path;
    };
    std::vector<SavedRun> saved;
    // The run index of the last failure, 0 when none.
    int failedRun = 0;
    bool aborted = false;
};

// Form load: connect, read the directory, disconnect, the messages of an
// empty or corrupted directory. True when runs are listed.
bool LoadDownloadForm(DownloadControl& form);
// Reads the directory over an open link and fills the list.
void CheckRunsAvailable(DownloadControl& form);
// Brings run (1-based list index) into RawData as a new run. True when the
// whole run came; on failure the run is out of the store again.
bool AdaptiveDownloadRun(DownloadControl& form, int run);
// DownloadBtn: the family's flow.
void DownloadSelected(DownloadControl& form);
void DownloadHX40(DownloadControl& form);
void DownloadSv63(DownloadControl& form);
// Option 1 for the ticked runs: each downloaded, saved under RunPath and
// taken out of memory again. Also what tracelab-cli download runs.
bool DownloadEachRunToDisk(DownloadControl& form);
// The file name for run index under RunPath for today; empty (with the
// message) when no free name is found.
std::string DownloadFileName(DownloadControl& form, int index);

// The stored packet size ("PacketCount"; below 4 reads 255).
int StoredPacketCount();

inline constexpr const char* kDownloadAborted = "Download aborted by user";
inline constexpr const char* kDownloadIncomplete =
    "There has been a communications problem that has prevented the whole run being downloaded";
inline constexpr const char* kNoData = "The device apparently contains no data";
inline constexpr const char* kCorruptedData =
    "The device may contain corrupted data, you are advised to clear it's memory and to check "
    "the signals going to the unit and it's power supply";
inline constexpr const char* kMaxRunsMessage =
    "You have already loaded the maximum number of runs into memory";
inline constexpr const char* kSelectRun = "Please select a run";

}  // namespace tl
