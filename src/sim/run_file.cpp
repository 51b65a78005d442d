#include "sim/run_file.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>

namespace tl::sim {

namespace {

void PutI32(std::vector<uint8_t>& out, int32_t v) {
    const uint32_t u = static_cast<uint32_t>(v);
    for (int i = 0; i < 4; ++i) out.push_back(static_cast<uint8_t>(u >> (8 * i)));
}

}  // namespace

std::vector<uint8_t> RunFileBytes(const RawRun& run) {
    std::vector<uint8_t> out;
    PutI32(out, 7576);
    PutI32(out, run.fileType);
    if (run.planes) {
        out.reserve(12 + static_cast<size_t>(8) * (run.frames + 1));
        PutI32(out, run.frames);
        for (int v = 1; v <= 8; ++v) {
            out.push_back(run.header[v - 1]);
            const auto begin = run.bytes.begin() + static_cast<std::ptrdiff_t>(v - 1) * run.frames;
            out.insert(out.end(), begin, begin + run.frames);
        }
    } else {
        out.insert(out.end(), run.bytes.begin(), run.bytes.end());
    }
    return out;
}

bool WriteFileReplacing(const std::string& path, const std::string& bytes, std::string& error) {
    const std::string temp = path + ".part";
    {
        std::ofstream f(temp, std::ios::binary | std::ios::trunc);
        if (!f) {
            error = "cannot write " + temp;
            return false;
        }
        f.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        f.close();
        if (!f) {
            error = "cannot write " + temp;
            std::error_code ec;
            std::filesystem::remove(temp, ec);
            return false;
        }
    }
    std::error_code ec;
    std::filesystem::rename(temp, path, ec);
    if (ec) {
        error = "cannot replace " + path + ": " + ec.message();
        std::filesystem::remove(temp, ec);
        return false;
    }
    return true;
}

bool WriteRunFile(const std::string& path, const RawRun& run, std::string& error) {
    const std::vector<uint8_t> bytes = RunFileBytes(run);
    return WriteFileReplacing(path, std::string(bytes.begin(), bytes.end()), error);
}

std::string CarFileText(const VehicleParams& v) {
    std::string out;
    auto line = [&](const std::string& key, double value) {
        char buf[64];
        std::snprintf(buf, sizeof buf, "%.6g", value);
        out += "\"" + key + "\",\"" + buf + "\"\r\n";
    };
    for (int g = 0; g < 7; ++g)
        line("GearRatioVal" + std::to_string(g + 1), g < v.gears ? v.gearRatios[g] : 0.0);
    line("FinalDriveRat", v.finalDrive);
    line("IgntionPulsesRev", v.ignitionPulsesRev);
    line("UseWheelForRpm", 0);
    line("WheelPulsesRev", v.wheelPulsesRev);
    line("DrivenRollingCircVal", v.tyreCircumference);
    // The wheel speed of a stream logger is the user's formula on the wheel
    // pulse frequency (Frequency 1): metres per pulse in the first vehicle
    // constant, times 3.6 for km/h.
    out += "\"WheelSpeedFormula\",\"VAR_38 * CAR_1 * 3.6\"\r\n";
    line("Car Constant1", v.tyreCircumference / std::max(1.0, double(v.wheelPulsesRev)));
    line("CdaVal", v.cda);
    line("RollingVal", v.rolling);
    line("CarMass", v.mass);
    line("LongAccelOffset", 0);
    line("LatAccelOffset", 0);
    line("AutoZeroAccelerometers", 0);
    line("ReverseAccels", 0);
    return out;
}

std::string TruthCsvText(const Trajectory& traj, int rows) {
    std::string out =
        "time_s,lap,distance_m,x_m,y_m,latitude_deg,longitude_deg,speed_kph,accel_long_g,"
        "accel_lat_g,heading_deg,gear,rpm,beacon\n";
    out.reserve(out.size() + static_cast<size_t>(rows) * 130);
    char buf[256];
    const int n = std::min<int>(rows, static_cast<int>(traj.rows.size()));
    for (int k = 0; k < n; ++k) {
        const TruthRow& r = traj.rows[k];
        std::snprintf(buf, sizeof buf,
                      "%.2f,%d,%.3f,%.3f,%.3f,%.8f,%.8f,%.3f,%.4f,%.4f,%.2f,%d,%.0f,%d\n", r.time,
                      r.lap, r.distance, r.x, r.y, r.lat, r.lon, r.speed * 3.6,
                      r.accelLong / kGravity, r.accelLat / kGravity,
                      r.heading * 180.0 / 3.14159265358979323846, r.gear, r.rpm, r.beacon ? 1 : 0);
        out += buf;
    }
    return out;
}

std::string LapsCsvText(const Trajectory& traj, int rows) {
    std::string out = "event,beacon,time_s,row,lap,distance_m,lap_time_s\n";
    char buf[160];
    double lastLine = -1.0;
    for (const Crossing& c : traj.crossings) {
        if (c.row >= rows) break;
        const bool line = c.beacon == 0;
        const double lapTime = line && lastLine >= 0.0 ? c.time - lastLine : 0.0;
        std::snprintf(buf, sizeof buf, "%s,%d,%.4f,%d,%d,%.3f,%.4f\n", line ? "line" : "beacon",
                      c.beacon, c.time, c.row, c.lap, c.distance, lapTime);
        out += buf;
        if (line) lastLine = c.time;
    }
    return out;
}

}  // namespace tl::sim
