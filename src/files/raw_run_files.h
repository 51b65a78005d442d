// Raw run files (.run): the load dialog and its dispatch, the family check,
// the raw loaders of both RawData shapes, the summary run loader, and the
// save of one run's raw bytes.
//
// Every .run file begins with an eight-byte head, little-endian:
//   offset 0  magic, signed 32-bit, 7576
//   offset 4  file type, signed 32-bit:
//             1 raw HX40, 200 raw MQ7, 201 raw SW63, 202 raw SV63,
//             10/7/8/9 session HX40/MQ7/SW63/SV63, 101 SV63 summary run.
// Plane files (types 1 and 202): N (signed 32-bit), then eight planes of
// N + 1 bytes, vector 1 first, each the run's header byte for that vector and
// then the N samples of the vector. Stream files (types 200 and 201): the
// byte stream of the run to the end of the file. Summary files (type 101): an
// upper index U (signed 32-bit) and the bytes 0 to U.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "core/build_profile.h"

namespace tl {

inline constexpr int32_t kRunFileMagic = 7576;

inline constexpr int32_t kFileTypeRawHX40 = 1;
inline constexpr int32_t kFileTypeSessionMQ7 = 7;
inline constexpr int32_t kFileTypeSessionSW63 = 8;
inline constexpr int32_t kFileTypeSessionSV63 = 9;
inline constexpr int32_t kFileTypeSessionHX40 = 10;
inline constexpr int32_t kFileTypeSummarySV63 = 101;
inline constexpr int32_t kFileTypeRawMQ7 = 200;
inline constexpr int32_t kFileTypeRawSW63 = 201;
inline constexpr int32_t kFileTypeRawSV63 = 202;

// The loaders keep at most this many runs in memory; RunInfo has records up
// to 11, one spare.
inline constexpr int32_t kMaxRunsLoaded = 10;
inline constexpr int32_t kLastRunRecord = 11;

// Sanity limits for hostile or damaged files, checked before anything is
// allocated. A plane file may claim at most 2^24 samples (46 hours of HX40
// frames at 100 per second, far beyond any logger's memory, and the largest
// count the row arithmetic carries exactly in single precision). A stream
// file may hold at most 2^27 bytes. A summary run is 1024 bytes; 64 KiB is
// allowed.
inline constexpr int32_t kMaxPlaneSamples = 1 << 24;
inline constexpr int64_t kMaxStreamBytes = int64_t{1} << 27;
inline constexpr int32_t kMaxSummaryBytes = 1 << 16;

struct RunFileHead {
    int32_t magic = 0;
    int32_t type = 0;
};

// Reads the head; bytes missing from a short file read as 0, as a read past
// the end always did. Returns false when the file cannot be opened (the head
// then stays 0, which no check accepts).
bool ReadRunFileHead(const std::string& path, RunFileHead& head);

bool IsKnownRunFileType(int32_t type);
bool IsRawRunFileType(int32_t type);
bool IsPlaneRunFileType(int32_t type);
bool IsSessionRunFileType(int32_t type);
// The family a file type belongs to (Family::None for an unknown type).
Family FamilyOfRunFileType(int32_t type);
// The raw file type a build of the family writes (0 for no family).
int32_t RawRunFileTypeOf(Family family);

// With an empty path shows the load dialog; with a path loads that file. The
// dialog comes back after every refusal until the user cancels or a
// selection passes. A raw run the user chose to process is handed to
// processRun (the conversion driver, which lives above this room) once its
// rows are allocated: road/run_road.h has the LoadDataFromFile(path) the
// program calls, which passes ConvertRawToRunData.
using ProcessLoadedRun = void (*)(int32_t run);
void LoadDataFromFile(const std::string& path, ProcessLoadedRun processRun);
bool CheckFileHarwardwareCompatibility(int32_t fileType);
// The loaders return false when they refused the file (with a message) and
// left the store untouched; true when a run (or summary run) was added.
bool LoadRawDataFromFileHX40(const std::string& path);
bool LoadRawDataFromFileMQ7(const std::string& path);
bool LoadSummaryRunDataFromFile(const std::string& path);

// run above 0: the save dialog and the raw file of that run; 0 or below: the
// session file, not yet supported by this version.
void SaveDataToFile(int32_t run);
// Writes the raw file of one run. Returns false (with a message) when
// nothing was written; the file at path is then as it was.
bool SaveRawDataToFile(int32_t run, const std::string& path);
// Writes a summary run file (type 101) of the given bytes; the format's owner
// for the Summary Results Explorer's save. Returns false on failure, with
// the reason in error.
bool WriteSummaryRunFile(const std::string& path, std::span<const uint8_t> bytes,
                         std::string& error);

}  // namespace tl
