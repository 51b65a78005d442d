// User channels: up to 100 formula channels, slots 100 to 199, named "U:" and
// the user's name, evaluated for every row as a stage of the pipeline. The
// wheel-speed formula of the MQ7 family goes through the same two routines.
//
// The user channel file (UserVarsCfgPath) is a sequence of triples, one per
// line: "name","formula",flag -- the two strings in double quotes, the flag a
// 16-bit number -- read by ReadFieldRecords (store/field_records.h) as the
// catalogue reads it. Only records with a name take a slot; the first named
// record is slot 100.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tl {

// Names a formula can read besides VAR_nn: CAR_1 to CAR_10, CdA, Roll, Mass,
// Temp, Press, Humid, in the order of the Consts flags.
inline constexpr int kUserConstCount = 16;
const char* UserConstName(int index);  // index 0 to 15

// The evaluator's name of a slot: "VAR_" and the slot with at least two digits.
std::string UserVarName(int slotNumber);

void CalculateUserChannels(int32_t run);
// True if the formula is sound; slots receives the slots it reads (ascending),
// consts sixteen flags for the constants it reads.
bool CheckInputsRequired(const std::string& formula, std::vector<int>& slots,
                         std::vector<bool>& consts);
// Evaluates the formula for every row of the run into the column. Results
// beyond +-1e20 are held at the limit.
void CalculateUserVar(const std::string& formula, const std::vector<int>& slots,
                      const std::vector<bool>& consts, int32_t column, int32_t run);

struct UserChannel {
    std::string name;
    std::string formula;
    int flag = 0;
};
// The file's records as written (place-holding records with an empty name
// included). An unreadable file gives none.
std::vector<UserChannel> ReadUserChannels(const std::string& path);
// Writes the records atomically; false when the file cannot be written.
bool SaveUserChannels(const std::string& path, const std::vector<UserChannel>& channels);

}  // namespace tl
