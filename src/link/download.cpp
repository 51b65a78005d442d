#include "link/download.h"

#include <cmath>
#include <cstdio>
#include <ctime>
#include <filesystem>

#include "convert/gps.h"
#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/log.h"
#include "core/ui_services.h"
#include "files/raw_run_files.h"
#include "files/summary_run_list.h"
#include "link/serial_link.h"
#include "results/track_markers.h"
#include "store/run_procedures.h"
#include "store/run_store.h"

namespace tl {
namespace {

bool Sv63() {
    return Profile().HardwareSV63;
}

void Sv63Pause() {
    if (Sv63()) Pause(0.1);
}

std::string Fixed(double v, int decimals) {
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.*f", decimals, v);
    return buf;
}

void Refresh(DownloadControl& form) {
    if (form.onRefresh) form.onRefresh();
}

// A command byte of this link: a packet size of this value would be read as
// "R", "A" or "O".
bool IsCommandCode(int v) {
    return v == 'R' || v == 'A' || v == 'O';
}

// Takes the newest run out of the store again, before its rows exist.
void DropNewestRun(int32_t rawEndBefore) {
    RunStore& s = Store();
    s.RunInfo[s.RunCount] = RunRecord{};
    s.RunCount -= 1;
    Markers().ResizeRuns(s.RunCount);
    PreserveRawData(s.RunCount == 0 ? 1 : rawEndBefore);
}

int TickedCount(const DownloadControl& form) {
    int n = 0;
    for (const auto& r : form.runs) n += r.ticked ? 1 : 0;
    return n;
}

}  // namespace

std::vector<ListedRun> ParseRunDirectory(const std::vector<uint8_t>& reply, Family family) {
    std::vector<ListedRun> runs;
    if (reply.size() < 5) return runs;
    const size_t count = (reply.size() - 5) / 13;
    int32_t lastEnd = 0;
    for (size_t k = 0; k < count; ++k) {
        const uint8_t* r = reply.data() + k * 13;
        ListedRun run;
        run.number = r[0];
        run.endAddress = (int32_t(r[1]) << 16) | (int32_t(r[2]) << 8) | r[3];
        run.sampleByte = r[3];
        run.type = family == Family::SV63 ? r[4] : 0;
        if (k == 0)
            run.RunByteLength = run.endAddress;
        else if (family == Family::SV63)
            run.RunByteLength = run.endAddress - r[0] + 1;
        else
            run.RunByteLength = run.endAddress - lastEnd;
        lastEnd = run.endAddress;
        if (run.type != 0) run.RunByteLength = 128;  // a summary run
        if (r[6] != '?') run.timeText = ExtractGPSTime(std::string(r + 6, r + 12));
        run.line = RunListLine(run, family);
        runs.push_back(run);
    }
    return runs;
}

std::string RunListLine(const ListedRun& run, Family family) {
    std::string line = "Run: " + std::to_string(run.number + 1);
    const bool timed = !run.timeText.empty();
    if (family != Family::SV63) {
        line += "  Duration: " + Fixed(run.RunByteLength / 100.0, 2);
        return line + (timed ? " seconds @ " + run.timeText : " seconds.  ");
    }
    switch (run.type) {
        case 0:
            line += "  Continuous Run, " + std::to_string(run.RunByteLength);
            return line + (timed ? " samples @ " + run.timeText : " samples");
        case 3:
            return line + (timed ? " 'Quarter Mile' Run @" + run.timeText : " 'Quarter Mile' Run ");
        case 5:
            return line + (timed ? " 'Time Between Speeds' Run @" + run.timeText
                                 : " 'Time Between Speeds' Run ");
        case 7:
            return line + (timed ? " 'Time Over Distance' Run @" + run.timeText
                                 : " 'Time Over Distance' Run ");
        default:
            return "";
    }
}

namespace {

// Lets the line settle before the directory is read: polls until no byte has
// come for 0.02 s (or the abort flag is up). The directory is asked for 5
// bytes at a time and "what is there" is added; the logger sends the whole
// reply in one burst, and the original's reads came long enough after the
// wait to take all of it. Read the moment 5 bytes wait, on a line that
// delivers byte by byte, a tail of fewer than 5 would never satisfy the next
// wait and the directory would read as corrupted.
void SettleLine() {
    int noted = InBufferCount();
    double quietSince = Timer();
    for (;;) {
        if (Link().AbortFlag) return;
        const int waiting = InBufferCount();
        const double now = Timer();
        if (waiting != noted || now + 0.01 < quietSince) {
            noted = waiting;
            quietSince = now;
        } else if (now - quietSince >= 0.02) {
            return;
        }
        DoEvents();
    }
}

}  // namespace

void CheckRunsAvailable(DownloadControl& form) {
    Link().InputMode = 1;
    Pause(0.5);
    Flush();
    SendText("N");
    LogDebug("Serial: N");
    form.runs.clear();
    if (!WaitForSerialInput(5)) {
        form.ListedRunCount = -1;
        return;
    }
    SettleLine();
    std::vector<uint8_t> reply = InputBytes();
    auto complete = [&] {
        if (reply.size() < 5 || (reply.size() - 5) % 13 != 0) return false;
        for (size_t i = reply.size() - 5; i < reply.size(); ++i)
            if (reply[i] != 0) return false;
        return true;
    };
    while (!complete()) {
        if (!WaitForSerialInput(5)) {
            form.ListedRunCount = -1;
            return;
        }
        SettleLine();
        const std::vector<uint8_t> more = InputBytes();
        reply.insert(reply.end(), more.begin(), more.end());
    }
    form.ListedRunCount = static_cast<int32_t>((reply.size() - 5) / 13);
    LogDebug(std::to_string(form.ListedRunCount) + " found");
    LogDebug("Add the data to the download list");
    form.runs = ParseRunDirectory(reply, Profile().family());
}

bool LoadDownloadForm(DownloadControl& form) {
    // A new job: an abort pressed during an earlier one is spent.
    Link().AbortFlag = false;
    form.caption = "Loading run information....";
    Refresh(form);
    if (ConnectToLogger() < 1) {
        DisconnectFromLogger();
        form.ListedRunCount = -1;
        form.runs.clear();
        return false;
    }
    CheckRunsAvailable(form);
    DisconnectFromLogger();
    if (form.ListedRunCount == 0) {
        Message(kNoData);
        return false;
    }
    if (form.ListedRunCount < 0) {
        Message(kCorruptedData);
        return false;
    }
    form.caption = "Select runs to download";
    Refresh(form);
    return true;
}

int StoredPacketCount() {
    int count = GetConfigInt(Paths().TracelabCfgPath, "PacketCount");
    if (count < 4) count = kDefaultPacketCount;
    return std::min(count, 255);
}

bool AdaptiveDownloadRun(DownloadControl& form, int run) {
    // Frames go to the eight planes of the HX40 and SV63 families; a profile
    // of another family has no planes to take them.
    if (!Profile().PlaneFamily()) {
        LogDebug("download refused: the build's family keeps no frames");
        return false;
    }
    const ListedRun& listed = form.runs.at(run - 1);
    const int32_t length = listed.RunByteLength;
    const double start = Timer();
    auto elapsedSince = [](double from) {
        double e = Timer() - from;
        return e < 0 ? e + 86400.0 : e;
    };
    if (ConnectToLogger() < 1) return false;
    SetChecksumMode('Y');
    if (Sv63()) Pause(0.2);
    form.caption = "Downloading Run: " + std::to_string(run);
    Refresh(form);
    int packetCount = StoredPacketCount();
    Flush();
    SendText("s");
    Sv63Pause();
    SendByte(static_cast<uint8_t>(packetCount));
    Sv63Pause();
    if (!WaitForSerialInput(1)) {
        DisconnectFromLogger();
        return false;
    }
    (void)InputBytes();

    RunStore& s = Store();
    const int32_t rawEndBefore = s.RunCount > 0 ? s.RunInfo[s.RunCount].RawEnd : 0;
    s.RunCount += 1;
    Markers().ResizeRuns(s.RunCount);
    RunRecord& r = s.RunInfo[s.RunCount];
    r = RunRecord{};
    if (s.RunCount == 1) {
        r.RawStart = 1;
        r.RawEnd = length;
    } else {
        r.RawStart = rawEndBefore + 1;
        r.RawEnd = rawEndBefore + length + 1;
    }
    LogDebug("Raw data will be put between " + std::to_string(r.RawStart) + " and " +
             std::to_string(r.RawEnd));
    r.Name = "Run #" + std::to_string(run);
    LogDebug("Run named: " + r.Name);
    PreserveRawData(r.RawEnd);
    LogDebug("Raw data array expanded to except new data");
    const int32_t rawStart = r.RawStart;

    Link().InputMode = 1;
    SendText("M");
    Sv63Pause();
    SendByte(static_cast<uint8_t>(run - 1));
    Sv63Pause();

    auto fail = [&] {
        DisconnectFromLogger();
        DropNewestRun(rawEndBefore);
        return false;
    };

    int32_t address = 0;
    int noDataCount = 0, badCount = 0, goodCount = 0;
    bool finished = false;
    std::vector<uint8_t> data;
    for (;;) {
        if (address >= length - 1) {
            SetConfig(Paths().TracelabCfgPath, "PacketCount", static_cast<float>(packetCount));
            DisconnectFromLogger();
            return true;
        }
        DoEvents();
        if (Link().AbortFlag) break;
        const double percent = double(address) / (length + 1) * 100.0;
        Sv63Pause();
        if (percent <= 1) {
            form.DownloadProgressLbl =
                Fixed(percent, 1) + "% downloaded. (" + std::to_string(packetCount) + " ppt)";
        } else {
            const double elapsed = elapsedSince(start);
            const double left = elapsed * 100 / percent - elapsed;
            form.DownloadProgressLbl = Fixed(percent, 1) + "% downloaded. Approximately " +
                                       Fixed(left, 0) + " seconds left. (" +
                                       std::to_string(packetCount) + " ppt)";
        }
        Refresh(form);
        const int payload = packetCount * kPacketBytes;
        if (Sv63()) {
            Pause(0.1);
            (void)WaitForSerialInputLong(payload + 2);
        } else {
            (void)WaitForSerialInput(payload + 2);
        }
        if (Link().AbortFlag) break;
        const int waiting = InBufferCount();
        if (waiting == 0) {
            LogDebug("No data recieved at all");
            if (++noDataCount > 4) {
                LogDebug("Still no data, so giving up");
                return fail();
            }
            data.assign(payload + 1, 0);
            data[payload] = 255;
        } else if (waiting < payload) {
            LogDebug("there wasn't enought data :(");
            data = InputBytes();
            Sv63Pause();
            data.resize(payload + 1, 0);
            data[payload] = 255;
        } else {
            data = InputBytes();
            if (data.size() < size_t(payload) + 1) data.resize(payload + 1, 255);
        }
        uint8_t sum = 0;
        for (int i = 0; i < payload; ++i) sum ^= data[i];
        if (sum != data[payload]) {
            LogDebug("Checksum error ... checksum= " + std::to_string(sum) +
                     "   checksum recieved= " + std::to_string(data[payload]));
            goodCount = 0;
            if (++badCount > 2) {
                packetCount -= 4;
                LogDebug("reduce packet size " + std::to_string(packetCount));
                if (packetCount < 4) {
                    packetCount = 4;
                    // The size is not kept here: the next download begins at
                    // the last one saved after a complete run.
                    Message(kDownloadIncomplete);
                    return fail();
                }
                if (IsCommandCode(packetCount)) packetCount -= 1;
                SendByte(static_cast<uint8_t>(packetCount));
                LogDebug("Serial: Chr(" + std::to_string(packetCount) + ")");
                badCount = 0;
                Sv63Pause();
            } else {
                SendByte(static_cast<uint8_t>(packetCount));
                LogDebug("Serial: chr(" + std::to_string(packetCount) + ")");
                Sv63Pause();
            }
            continue;
        }
        LogDebug("Data recieved and checksum okay");
        ++goodCount;
        badCount = 0;
        if (goodCount < 11 || packetCount >= 244) {
            LogDebug("data okay.. loading into results!");
            Sv63Pause();
            RawArray& raw = s.RawData;
            RunRecord& rec = s.RunInfo[s.RunCount];
            for (int i = 0; i < payload; ++i) {
                const int32_t f = i / 8;
                if (f + address > length - 1) {
                    LogDebug("I've finished!!");
                    Sv63Pause();
                    SendText("A");
                    LogDebug("Serial: A");
                    Sv63Pause();
                    finished = true;
                    break;
                }
                if (i + int64_t(address) * 8 > 7)
                    raw(rawStart + address + f, (i % 8) + 1) = data[i];
                else
                    rec.HeaderBytes[i] = data[i];
            }
            address += packetCount * 4;
            if (!finished) {
                SendText("O");
                LogDebug("Serial: O");
            }
            Sv63Pause();
        } else {
            // Eleven clean transfers: grow, and have this one sent again at
            // the new size.
            packetCount += 10;
            goodCount = 0;
            LogDebug("increase packet size " + std::to_string(packetCount));
            Sv63Pause();
            if (IsCommandCode(packetCount)) packetCount += 1;
            SendByte(static_cast<uint8_t>(packetCount));
            Sv63Pause();
        }
    }
    // Left by abort.
    // The progress text reads "User aborted download.. please wait." but is
    // not put on DownloadProgressLbl again: the label keeps its last figure.
    LogDebug("User aborted download.. please wait.");
    Refresh(form);
    Pause(2.0);
    SendText("A");
    Pause(0.1);
    LogDebug("Serial: A");
    return fail();
}

std::string DownloadFileName(DownloadControl& form, int index) {
    namespace fs = std::filesystem;
    std::string runPath = form.runPathOverride.empty()
                              ? GetConfigString(Paths().TracelabCfgPath, "RunPath")
                              : form.runPathOverride;
    std::error_code ec;
    if (!runPath.empty() && !fs::is_directory(runPath, ec)) {
        Message("The default run path does not exist, files will be saved to the root directory");
        if (form.runPathOverride.empty()) SetConfigString(Paths().TracelabCfgPath, "RunPath", "");
        runPath.clear();
    }
    const std::time_t now = std::time(nullptr);
    std::tm tm{};
    localtime_r(&now, &tm);
    const std::string stem = runPath + "/" + std::to_string(tm.tm_mday) + "-" +
                             std::to_string(tm.tm_mon + 1) + "-" +
                             std::to_string(tm.tm_year + 1900) + "_Run#" + std::to_string(index);
    std::string name = stem + ".run";
    for (int counter = 1; fs::exists(name, ec); ++counter) {
        if (counter > 100) {
            Message(
                "There is a problem writing the runs to disk, please check the default run "
                "path is valid");
            return "";
        }
        name = stem + "__" + std::to_string(counter) + ".run";
    }
    return name;
}

bool DownloadEachRunToDisk(DownloadControl& form) {
    if (Store().RunCount >= kMaxRunsLoaded) {
        Message(kMaxRunsMessage);
        return false;
    }
    for (size_t k = 0; k < form.runs.size(); ++k) {
        if (!form.runs[k].ticked) continue;
        const int index = static_cast<int>(k) + 1;
        if (!AdaptiveDownloadRun(form, index)) {
            form.failedRun = index;
            if (Link().AbortFlag) {
                form.aborted = true;
                Message(kDownloadAborted);
            }
            return false;
        }
        const int32_t run = Store().RunCount;
        AllocateRunArray(run);
        const std::string path = DownloadFileName(form, index);
        bool written = false;
        if (!Link().AbortFlag && !path.empty()) written = SaveRawDataToFile(run, path);
        const int64_t bytes = int64_t(form.runs[k].RunByteLength) * 8;
        DeleteRun(run);
        if (Link().AbortFlag) {
            form.aborted = true;
            form.failedRun = index;
            Message(kDownloadAborted);
            return false;
        }
        if (!written) {
            form.failedRun = index;
            return false;
        }
        form.saved.push_back({index, bytes, StoredPacketCount(), path});
    }
    return true;
}

namespace {

// Downloads one run into memory; with convert also processes it. Checks the
// abort flag after the download.
bool DownloadIntoMemory(DownloadControl& form, int index, bool convert) {
    LogDebug("download run: ");
    if (!AdaptiveDownloadRun(form, index)) {
        form.failedRun = index;
        if (Link().AbortFlag) {
            form.aborted = true;
            Message(kDownloadAborted);
        }
        return false;
    }
    const int32_t run = Store().RunCount;
    LogDebug("allocate run: ");
    AllocateRunArray(run);
    if (Link().AbortFlag) {
        DeleteRun(run);
        form.aborted = true;
        Message(kDownloadAborted);
        return false;
    }
    if (convert && form.convertRun) {
        LogDebug("Convert run: ");
        form.convertRun(run);
    }
    return true;
}

}  // namespace

void DownloadHX40(DownloadControl& form) {
    const int count = TickedCount(form);
    LogDebug(std::to_string(count) + " requested");
    if (count == 0) {
        Message(kSelectRun);
        return;
    }
    DownloadOption option = DownloadOption::IntoMemoryAndProcess;
    if (count > 1) {
        option = form.chooseOption();
        if (option == DownloadOption::Cancel) return;
    } else if (Store().RunCount >= kMaxRunsLoaded) {
        Message(kMaxRunsMessage);
        return;
    }
    if (option == DownloadOption::SaveEachToDisk) {
        (void)DownloadEachRunToDisk(form);
        return;
    }
    if (Store().RunCount + count > kMaxRunsLoaded) {
        Message("There Is Already " + std::to_string(Store().RunCount) +
                " Loaded In Memory Out Of A Maximum of " + std::to_string(kMaxRunsLoaded) +
                ", So There Is Not Enough Space To Load The Selected " + std::to_string(count) +
                " Runs");
        return;
    }
    for (size_t k = 0; k < form.runs.size(); ++k) {
        if (!form.runs[k].ticked) continue;
        if (!DownloadIntoMemory(form, static_cast<int>(k) + 1,
                                option == DownloadOption::IntoMemoryAndProcess))
            return;
    }
}

void DownloadSv63(DownloadControl& form) {
    LogDebug("Sv63 download module");
    int count = 0, continuous = 0;
    for (const auto& r : form.runs) {
        count += r.ticked ? 1 : 0;
        continuous += r.ticked && r.type == 0 ? 1 : 0;
    }
    LogDebug(std::to_string(count) + " runs requested");
    LogDebug(std::to_string(continuous) + " continious runs requested");
    if (count == 0) {
        Message(kSelectRun);
        return;
    }
    if (Store().RunCount + continuous > kMaxRunsLoaded) {
        Message(kMaxRunsMessage);
        return;
    }
    bool summaries = false;
    for (size_t k = 0; k < form.runs.size(); ++k) {
        const ListedRun& listed = form.runs[k];
        if (!listed.ticked) continue;
        LogDebug("Download data for run : " + std::to_string(k + 1));
        if (listed.type != 0) {
            if (!AdaptiveDownloadRun(form, static_cast<int>(k) + 1)) {
                form.failedRun = static_cast<int>(k) + 1;
                if (Link().AbortFlag) {
                    form.aborted = true;
                    Message(kDownloadAborted);
                }
                break;
            }
            const int32_t run = Store().RunCount;
            AllocateRunArray(run);
            LogDebug("set up the storage for the summary run");
            const RunStore& s = Store();
            const RunRecord& r = s.RunInfo[run];
            SummaryRunRecord summary;
            summary.Name = r.Name;
            // The run's 128 frames as one byte array: the header frame, then
            // the raw frames in order.
            summary.Bytes.assign(r.HeaderBytes.begin(), r.HeaderBytes.end());
            for (int32_t i = r.RawStart + 1; i <= r.RawStart + 127 && i <= r.RawEnd; ++i)
                for (int v = 1; v <= 8; ++v) summary.Bytes.push_back(s.RawData(i, v));
            summary.Bytes.resize(kSummaryRunBytes, 0);
            LogDebug("copy the data into the summary array");
            const bool aborted = Link().AbortFlag;
            if (!aborted) SummaryRuns().Add(std::move(summary));
            LogDebug("remove the redundant data");
            DeleteRun(run);
            if (aborted) {
                form.aborted = true;
                Message(kDownloadAborted);
                break;
            }
            summaries = true;
        } else {
            LogDebug("Allocate memory for continious run");
            if (!DownloadIntoMemory(form, static_cast<int>(k) + 1, true)) break;
        }
    }
    if (summaries) {
        LogDebug("There was some summary runs loaded, so refresh the sumaary table");
        SummaryRuns().NotifyChanged();
    }
}

void DownloadSelected(DownloadControl& form) {
    Link().AbortFlag = false;
    if (Sv63()) {
        LogDebug("download with Sv63 options set");
        DownloadSv63(form);
    } else {
        LogDebug("download with HX40 options set");
        DownloadHX40(form);
    }
}

}  // namespace tl
