#include "files/csv_export.h"

#include <charconv>
#include <cmath>
#include <ctime>
#include <filesystem>
#include <optional>
#include <span>
#include <vector>

#include "convert/gps.h"
#include "core/atomic_file.h"
#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/errors.h"
#include "core/log.h"
#include "core/platform.h"
#include "core/support.h"
#include "core/ui_services.h"
#include "formats/plane_frames.h"
#include "store/catalogue.h"
#include "store/run_store.h"

namespace fs = std::filesystem;

namespace tl {
namespace {

const char* const kCsvFilter = "Comma Seperate Text File (*.csv)|*.csv|Show All Files (*.*)|*.*";
const char* const kOverwriteText = "The specified file will be over written, are you sure?";
const char* const kLockedText = "The file appears to be locked by another application";

// Lines end in CR LF, as the original program's text files did; every
// spreadsheet reads them, and the files compare byte for byte across builds.
const char* const kEol = "\r\n";

// Text is gathered in memory and handed to the writer in blocks of this size.
constexpr size_t kFlushBytes = 1 << 20;
// The interface is let run every so many rows of a long export.
constexpr int32_t kRowsPerYield = 16384;

// The platform's short date: the C library's "%x" under the process locale
// (the window program takes the user's locale at start, the tools run in "C").
std::string ShortDate() {
    std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    char buf[64];
    const size_t n = std::strftime(buf, sizeof buf, "%x", &local);
    return std::string(buf, n);
}

void AppendInt(std::string& out, int64_t value) {
    char buf[24];
    auto res = std::to_chars(buf, buf + sizeof buf, value);
    out.append(buf, res.ptr);
}

// Appends the digits of |value| in the plain form (see PlainNumberText),
// without sign and blanks. value is finite and not zero.
void AppendPlainMagnitude(std::string& out, float magnitude) {
    char sci[32];
    auto r = std::to_chars(sci, sci + sizeof sci, magnitude, std::chars_format::scientific, 6);
    std::string_view s(sci, static_cast<size_t>(r.ptr - sci));
    const size_t e = s.find('e');
    int exponent = 0;
    std::from_chars(s.data() + e + 1 + (s[e + 1] == '+' ? 1 : 0), s.data() + s.size(), exponent);
    // Seven significant digits in fixed form from 1E-04 up to 9999999; the
    // exponent form outside, as the original runtime printed singles.
    if (exponent > -5 && exponent < 7) {
        char fix[48];
        auto f =
            std::to_chars(fix, fix + sizeof fix, magnitude, std::chars_format::fixed, 6 - exponent);
        std::string_view t(fix, static_cast<size_t>(f.ptr - fix));
        if (t.find('.') != std::string_view::npos) {
            while (!t.empty() && t.back() == '0') t.remove_suffix(1);
            if (!t.empty() && t.back() == '.') t.remove_suffix(1);
        }
        // No leading zero before the point: ".5".
        if (t.size() > 1 && t[0] == '0' && t[1] == '.') t.remove_prefix(1);
        out.append(t);
        return;
    }
    std::string_view mant = s.substr(0, e);
    if (mant.find('.') != std::string_view::npos) {
        while (mant.back() == '0') mant.remove_suffix(1);
        if (mant.back() == '.') mant.remove_suffix(1);
    }
    out.append(mant);
    out.push_back('E');
    out.push_back(exponent < 0 ? '-' : '+');
    const int a = std::abs(exponent);
    if (a < 10) out.push_back('0');
    AppendInt(out, a);
}

void AppendPlainNumber(std::string& out, float value) {
    if (std::isnan(value)) {
        out.append(" NaN ");
        return;
    }
    out.push_back(std::signbit(value) && value != 0.0f ? '-' : ' ');
    if (value == 0.0f) {
        out.push_back('0');
    } else if (std::isinf(value)) {
        out.append("Inf");
    } else {
        AppendPlainMagnitude(out, std::fabs(value));
    }
    out.push_back(' ');
}

// "0.00" of a time of day.
void AppendFixed2(std::string& out, double value) {
    char buf[48];
    auto r = std::to_chars(buf, buf + sizeof buf, value, std::chars_format::fixed, 2);
    out.append(buf, r.ptr);
}

// Gathers text and passes it to the writer in large blocks.
class CsvOut {
  public:
    explicit CsvOut(const std::string& path) : writer_(path) { text_.reserve(kFlushBytes + 4096); }
    std::string& text() { return text_; }
    void MaybeFlush() {
        if (text_.size() >= kFlushBytes) Flush();
    }
    bool Commit(std::string& error) {
        Flush();
        if (!writer_.ok() || !writer_.Commit()) {
            error = writer_.error().empty() ? "the file could not be written" : writer_.error();
            return false;
        }
        return true;
    }
    bool ok() const { return writer_.ok(); }
    const std::string& error() const { return writer_.error(); }

  private:
    void Flush() {
        if (!text_.empty()) writer_.Write(text_.data(), text_.size());
        text_.clear();
    }
    AtomicFileWriter writer_;
    std::string text_;
};

// The sentence of the HX40 GPS block starting at frame p: from the last of
// its seven frames to the first, vectors 1 to 8 within a frame.
void ReadHx40Sentence(const RawArray& raw, int32_t p, std::string& sentence) {
    sentence.clear();
    for (int32_t f = p + 6; f >= p; --f)
        for (int v = 1; v <= 8; ++v) sentence.push_back(static_cast<char>(raw(f, v)));
}

// Splits into at most nine fields, the last holding the rest of the text.
// Returns the number of fields.
size_t SplitSentence(const std::string& sentence, std::string (&fields)[9]) {
    size_t count = 0, start = 0;
    for (; count < 8; ++count) {
        const size_t comma = sentence.find(',', start);
        if (comma == std::string::npos) break;
        fields[count].assign(sentence, start, comma - start);
        start = comma + 1;
    }
    fields[count].assign(sentence, start, std::string::npos);
    return count + 1;
}

std::string SaveDialog(const std::string& title) {
    for (;;) {
        FileDialogRequest request;
        request.title = title;
        request.filter = kCsvFilter;
        request.initialDir = GetConfigString(Paths().TracelabCfgPath, "ExportPath");
        std::optional<std::string> chosen = CurrentPlatform().files->SaveFile(request);
        if (!chosen || chosen->empty()) return {};
        std::error_code ec;
        if (fs::exists(*chosen, ec) && !YesNoBox("Warning", kOverwriteText)) continue;
        if (!FileWriteable(*chosen)) {
            Message(kLockedText);
            continue;
        }
        return *chosen;
    }
}

void ExportWithDialog(const char* procedure, int32_t run, bool timeStamp) {
    Procedure(procedure, [&] {
        const std::string target = SaveDialog("Export Data To CSV Format File");
        if (target.empty()) return;
        LogDebug("Export data to : " + target);
        std::optional<std::string> answer = CurrentPlatform().messages->InputBox(
            "Enter Sample Time Of Data To Be Exported\r\n(Increments Of 0.01 Seconds)",
            "Sample Time", "0.01");
        const int32_t step = answer ? ExportStepFromText(*answer) : 0;
        std::string error;
        // The file was opened for output before the question, so a refused
        // sample time leaves it empty.
        if (step < 1) {
            if (!WriteProcessedCsv(run, target, 0, timeStamp, error)) Message(error);
            return;
        }
        ShowPleaseWait("Exporting Data To .CSV File");
        const bool ok = WriteProcessedCsv(run, target, step, timeStamp, error);
        HidePleaseWait();
        if (!ok) Message("The export to " + target + " failed: " + error);
    });
}

}  // namespace

std::string PlainNumberText(float value) {
    std::string out;
    AppendPlainNumber(out, value);
    return out;
}

int32_t ExportStepFromText(const std::string& sampleTime) {
    const double v = GetVal(sampleTime) * 100.0;
    if (!(v >= 1.0)) return 0;
    if (v > 2.0e9) return 2000000000;
    return static_cast<int32_t>(std::floor(v));
}

double Time2Seconds(double t) {
    const double h = std::floor(t / 10000);
    const double m = std::floor((t - h * 10000) / 100);
    const double s = t - h * 10000 - m * 100;
    return std::fmod(h, 24.0) * 3600 + m * 60 + s;
}

double Seconds2Time(double x) {
    const double h = std::floor(x / 3600);
    const double m = std::floor((x - h * 3600) / 60);
    const double s = x - h * 3600 - m * 60;
    return std::fmod(h, 24.0) * 10000 + m * 100 + s;
}

double CalculateRunStartTime(int32_t run) {
    return ProcedureValue("CalculateRunStartTime", 0.0, [&]() -> double {
        const RunStore& s = Store();
        if (run < 1 || run > s.RunCount || !Profile().HardwareHX40 || !s.RawData.planes())
            return 0.0;
        const RunRecord& r = s.RunInfo[run];
        const RawArray& raw = s.RawData;
        const int32_t rawEnd = std::min(r.RawEnd, raw.UpperIndex());
        std::string sentence;
        std::string fields[9];
        std::optional<double> first;
        // The rows are counted as AllocateRunArray counts them: a GPS block
        // and the frame after it make one row.
        int32_t row = 0;
        for (int64_t i = std::max(r.RawStart, 0); i <= rawEnd; ++i, ++row) {
            if (!Hx40BlockStarts(raw.Vector(3), i, rawEnd)) continue;
            const auto p = static_cast<int32_t>(i);
            i += 7;
            ReadHx40Sentence(raw, p, sentence);
            if (SplitSentence(sentence, fields) < 9) continue;
            if (!ValidNumber(fields[1])) continue;
            // The time of day belongs to the block's own row: the original
            // took the row's offset as it stood, without the 0.9 s the fix
            // is old when logged, and so do the stamps here.
            double start = Time2Seconds(GetVal_NI(fields[1])) - row / 100.0;
            if (start < 0) start += 86400.0;
            if (!first) first = start;
            const bool good = fields[0].empty() && ValidNumber(fields[3]) &&
                              ValidNumber(fields[5]) && ValidNumber(fields[7]) &&
                              (fields[4] == "N" || fields[4] == "S") &&
                              (fields[6] == "E" || fields[6] == "W");
            int sats = -1;
            bool flag = false;
            ExtractSatCount(fields[2], sats, flag);
            if (good && sats >= 4 && row > 90) return Seconds2Time(start);
        }
        return first ? Seconds2Time(*first) : 0.0;
    });
}

bool WriteProcessedCsv(int32_t run, const std::string& path, int32_t step, bool timeStamp,
                       std::string& error) {
    RunStore& s = Store();
    if (run < 1 || run > s.RunCount) {
        error = "there is no run " + std::to_string(run) + " in memory";
        return false;
    }
    const RunRecord& r = s.RunInfo[run];
    CsvOut out(path);
    if (!out.ok()) {
        error = out.error();
        return false;
    }
    if (step >= 1) {
        const auto& vars = Catalogue().RunVars;
        std::vector<std::span<const float>> columns;
        std::string& t = out.text();
        t.append("Data Output From Velquor Data Logging System ").append(ShortDate()).append(kEol);
        if (timeStamp) t.push_back(',');
        for (int slot = 1; slot <= kNoDataSlot; ++slot) {
            if (!vars[slot].Enabled) continue;
            t.append(vars[slot].Name).push_back(',');
            const int32_t c = vars[slot].Column;
            columns.push_back(c >= 0 && c < s.RunData.Columns()
                                  ? std::span<const float>(s.RunData.Column(c))
                                  : std::span<const float>());
        }
        t.append(kEol);
        const double startSeconds = timeStamp ? Time2Seconds(CalculateRunStartTime(run)) : 0.0;
        int32_t yieldAt = kRowsPerYield;
        for (int64_t row = r.RunStart; row <= r.RunEnd; row += step) {
            if (timeStamp) {
                AppendFixed2(t, Seconds2Time(startSeconds + (row - r.RunStart) / 100.0));
                t.push_back(',');
            }
            for (const auto& col : columns) {
                // A row the table does not hold reads as the empty column.
                AppendPlainNumber(t, row >= 0 && static_cast<size_t>(row) < col.size()
                                         ? col[static_cast<size_t>(row)]
                                         : 0.0f);
                t.push_back(',');
            }
            t.append(kEol);
            out.MaybeFlush();
            if (--yieldAt == 0) {
                yieldAt = kRowsPerYield;
                DoEvents();
            }
        }
    }
    return out.Commit(error);
}

bool WriteRawCsv(const std::string& path, std::string& error) {
    const RunStore& s = Store();
    const RawArray& raw = s.RawData;
    CsvOut out(path);
    if (!out.ok()) {
        error = out.error();
        return false;
    }
    std::string& t = out.text();
    t.append("Raw Data Output From Velquor Data Logging System ").append(ShortDate()).append(kEol);
    static const char kHex[] = "0123456789ABCDEF";
    int32_t yieldAt = kRowsPerYield;
    for (int32_t run = 1; run <= s.RunCount && run < static_cast<int32_t>(s.RunInfo.size());
         ++run) {
        const RunRecord& r = s.RunInfo[run];
        t.append("Run Name: ").append(r.Name).append(kEol);
        const int32_t last = std::min(r.RawEnd, raw.UpperIndex());
        for (int32_t i = std::max(r.RawStart, 0); i <= last; ++i) {
            if (raw.planes()) {
                for (int v = 1; v <= 8; ++v) {
                    AppendInt(t, raw(i, v));
                    t.push_back(',');
                }
            } else {
                const uint8_t b = raw(i);
                AppendInt(t, i);
                t.append(" -> ");
                AppendInt(t, b);
                t.append(" : ");
                if (b >= 16) t.push_back(kHex[b >> 4]);
                t.push_back(kHex[b & 15]);
            }
            t.append(kEol);
            out.MaybeFlush();
            if (--yieldAt == 0) {
                yieldAt = kRowsPerYield;
                DoEvents();
            }
        }
    }
    return out.Commit(error);
}

void ExportDataToFile(int32_t run) {
    ExportWithDialog("ExportDataToFile", run, false);
}

void ExportDataToFileWithTimeStamp(int32_t run) {
    ExportWithDialog("ExportDataToFileWithTimeStamp", run, true);
}

void ExportRawDataToFile() {
    Procedure("ExportRawDataToFile", [&] {
        const std::string target = SaveDialog("Export Raw Data To CSV Format File");
        if (target.empty()) return;
        LogDebug("Export raw data to : " + target);
        ShowPleaseWait("Exporting Raw Data To .CSV File");
        std::string error;
        const bool ok = WriteRawCsv(target, error);
        HidePleaseWait();
        if (!ok) Message("The export to " + target + " failed: " + error);
    });
}

}  // namespace tl
