// What the harnesses share: the engine started once per process on a
// private configuration root (seeded from the shipped defaults, every
// variable selected so that every channel is computed), a scripted platform
// that answers every question with No or cancel, and the way a fuzz input
// becomes a run file and a converted run.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "core/build_profile.h"

namespace tl::fuzz {

// Chooses the family (and its vehicle) with an empty run store. Cheap when
// the family is already in force and the store empty.
void UseFamily(Family family);
// Writes the bytes as the input file of this process and returns its path.
std::string WriteInputFile(const std::string& bytes);
// Loads the file as the load menu does (the process question answered No,
// so the run's rows are counted and allocated) and converts every run
// loaded: with derived, the whole processing; without, the family converter
// only (the derived stages read the options file many times per run, which
// would slow the converter harnesses tenfold). The store is emptied at the
// next UseFamily.
void LoadConvertAndClear(const std::string& path, bool derived);
// Empties the run store without rebuilding the catalogue: what the lean
// harnesses do between inputs (ClearCurrentRun rereads the options files).
void ResetStore();
// The lean paths: the bytes go straight into RawData as one run of the
// family in force, which is counted, allocated and converted by the family's
// converter. Planes: eight header bytes, then whole frames of eight bytes.
void ConvertPlanes(const uint8_t* data, size_t size);
void ConvertStream(const uint8_t* data, size_t size);
// The file loaders alone on a file (no question is answered Yes, so nothing
// is processed).
void LoadOnly(const std::string& path);

// A .run file head: magic 7576 and the type, little-endian.
std::string RunFileHead(int32_t type);
// A plane file of the given type: the first eight input bytes are the
// header bytes, the rest whole frames of eight bytes (frame-major, so that
// the text of a GPS block stays together in the input).
std::string PlaneFileFromFrames(int32_t type, const uint8_t* data, size_t size);

}  // namespace tl::fuzz
