// The configuration store: small text files of lines of two double-quoted
// fields, "key","value" CR LF. Nothing is cached: every read scans the file
// from the top, every write rewrites it, so a value set by one form is seen at
// once by any other. (A ConfigSnapshot holds one file for a single pass that
// reads many keys and writes none.)
//
// Writes replace the file through a temporary file and a rename, so a failed
// write never leaves a damaged file behind; the observable result (the lines
// and their order) is that of the original rewrite.
#pragma once

#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace tl {

// Rows held by the table of SetConfig and RemoveUserVarsFromConfig; a file of
// more records raises a subscript error (RuntimeError 9) before anything is
// written.
inline constexpr int kConfigTableRows = 501;

float GetConfig(const std::string& file, const std::string& key);
// An option read as an integer: the value truncated toward zero. A damaged
// file's value that is not a number reads 0, and one beyond the 32-bit range
// stops at its end.
int GetConfigInt(const std::string& file, const std::string& key);

// The options of one file as GetConfig reads them, the file read once: for a
// pass that looks up many keys (the filter passes ask three for each of up to
// 200 variables) and writes none. The first record of a key wins, as in
// GetConfig. An absent file is left to GetConfig key by key, for its message
// and its new empty file.
class ConfigSnapshot {
  public:
    explicit ConfigSnapshot(const std::string& file);
    float Get(const std::string& key) const;

  private:
    std::string file_;
    bool present_;
    std::unordered_map<std::string, float> values_;
};
void SetConfig(const std::string& file, const std::string& key, float value);
std::string GetConfigString(const std::string& file, const std::string& key);
bool SetConfigString(const std::string& file, const std::string& key, const std::string& value);
void RemoveUserVarsFromConfig();

// The fields of a text as the platform's comma-or-newline field input reads
// them: blanks and empty lines before a field are passed over; a field in
// double quotes runs to the next double quote (anything after it up to the
// separator is ignored); an unquoted field runs to the next comma or line end
// and is trimmed.
std::vector<std::string> SplitInputFields(const std::string& text);
// The records of a configuration file, read as the original's comma-or-newline
// field input does: a quoted field runs to the next double quote, so a quote
// inside a value breaks the file for every later reader, as it always did.
std::vector<std::pair<std::string, std::string>> ReadConfigRecords(const std::string& file);
// The text a number is stored as: the shortest decimal text of the single,
// in fixed notation (no exponent, which GetVal_NI could not read), with a
// point as the decimal mark whatever the locale.
std::string ConfigNumberText(float value);

// FileExists and FileReadable change the caller's string as the original did
// (cut at a NUL, quotes to blanks, trimmed).
bool FileExists(std::string& path);
bool FileExists(const std::string& path);
bool FileReadable(const std::string& path);
// Opens for appending, so an absent file is created. A file without the
// owner's write permission counts as read-only and yields false even for root.
bool FileWriteable(const std::string& path);
// Trimmed, last element after "\" or "/", cut at the first "."; "No Name" for
// an empty input.
std::string ExtractFileName(const std::string& path);

// Small file helpers for the store's own use and for callers that copy
// option files around (car files, the scratch file).
bool CopyFileReplacing(const std::string& from, const std::string& to);
bool DeleteFileIfPresent(const std::string& path);
// Writes the whole text to path through the one atomic writer of the program
// (core/atomic_file.h): a temporary file beside it renamed over it, so a
// failed write leaves the old file whole; a symbolic link stays a link to its
// replaced file, and the file keeps its permissions.
bool WriteFileAtomically(const std::string& path, const std::string& bytes);

}  // namespace tl
