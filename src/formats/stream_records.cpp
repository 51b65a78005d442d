#include "formats/stream_records.h"

#include <algorithm>
#include <string>

#include "core/ui_services.h"

namespace tl {

namespace stream_detail {
void LogCheckError(int64_t position) {
    if (LogOn()) LogDebug("check error @ " + std::to_string(position));
}
}  // namespace stream_detail

StreamClock::Step StreamClock::Stepped(int32_t d, int64_t position) {
    const bool log = LogOn();
    if (d < count_) {
        // The logger's clock stepped back or repeated.
        Step step = Step::BackIgnored;
        if (d - count_ > -10) {
            count_ = d;
            step = Step::BackRepaired;
        }
        if (log)
            LogDebug("The number of samples and the time index are inconsistant @" +
                     std::to_string(position));
        return step;
    }
    if (d - count_ >= 10) {
        if (log)
            LogDebug(
                "The number of samples and the time index are inconsistant, too much missing "
                "to correct for @" +
                std::to_string(position));
        return Step::TooFar;
    }
    if (log)
        LogDebug(
            "The number of samples and the time index are inconsistant, adding time "
            "vector @" +
            std::to_string(position));
    fillFrom_ = int64_t(base_) + count_;
    count_ = d;
    return Step::Filled;
}

StreamScan ScanStream(std::span<const uint8_t> raw, int64_t rawStart, int64_t rawEnd,
                      int32_t runStart, int32_t rawMarkIn, int32_t sampleMarkIn) {
    StreamScan sc;
    const bool log = LogOn();
    LogDebug("-----------Checking for errors in raw data--------------");
    if (raw.empty()) return sc;
    rawEnd = std::min<int64_t>(rawEnd, int64_t(raw.size()) - 1);
    StreamClock clock;
    int32_t firstCall = -1;
    int32_t sampleIndex = runStart;
    int32_t lastReport = -1;
    int64_t position = std::max<int64_t>(rawStart, 0);
    while (position < rawEnd) {
        const int id = raw[size_t(position)];
        const int len = stream_detail::kRecordLengths[size_t(id)];
        if (len != 0) {
            if (ChecksumHolds(raw, position, len)) {
                ++sc.recordCount;
                if (id == mq7::TimeIndex) {
                    const StreamClock::Step step =
                        clock.Advance(DecodeU24(raw, position + 1), firstCall, position);
                    if (step != StreamClock::Step::BackIgnored)
                        sampleIndex = runStart + clock.Count();
                    if (sampleMarkIn > sc.sampleCount)
                        sc.sampleMark = static_cast<int32_t>(position);
                    sc.sampleCount = sampleIndex - runStart;
                } else if (id != mq7::LoggerInfo && id != mq7::GpsTimeOfWeek) {
                    if (position < rawMarkIn) sc.rawMark = sc.sampleCount;
                }
                position += len;
            } else {
                // Ids 6 and 7 are logged by the check alone.
                if (log && id != mq7::LoggerInfo && id != mq7::GpsTimeOfWeek)
                    LogDebug("Checksum Error @ " + std::to_string(position));
                ++sc.errorCount;
                ++position;
            }
        } else {
            // Serial data records (19) count as unknown here, byte by byte.
            if (log) LogDebug("Channel Not Known @ " + std::to_string(position));
            ++sc.errorCount;
            ++position;
        }
        if (sc.errorCount > 50 && sc.errorCount % 25 == 0 && sc.errorCount != lastReport) {
            lastReport = sc.errorCount;
            HidePleaseWait();
            ShowPleaseWait("Scanning... " + std::to_string(sc.errorCount) + " errors found.");
            sc.waitShown = true;
        }
    }
    LogDebug("-----------Completed checking for errors in raw data--------------");
    return sc;
}

}  // namespace tl
