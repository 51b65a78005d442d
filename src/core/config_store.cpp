#include "core/config_store.h"

#include "core/atomic_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <charconv>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <limits>
#include <random>
#include <sstream>

#include "core/build_profile.h"
#include "core/errors.h"
#include "core/log.h"
#include "core/support.h"
#include "core/ui_services.h"

namespace fs = std::filesystem;

namespace tl {
namespace {

std::string Trim(const std::string& s) {
    size_t b = s.find_first_not_of(" \t");
    if (b == std::string::npos) return {};
    size_t e = s.find_last_not_of(" \t");
    return s.substr(b, e - b + 1);
}

bool ReadWholeFile(const std::string& path, std::string& out) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return false;
    std::ostringstream text;
    text << in.rdbuf();
    out = text.str();
    return true;
}

std::string RecordLine(const std::string& key, const std::string& value) {
    return "\"" + key + "\",\"" + value + "\"\r\n";
}

using Records = std::vector<std::pair<std::string, std::string>>;

// The table of 501 rows that SetConfig and RemoveUserVarsFromConfig fill; a
// longer file overflows it.
Records ReadConfigTable(const std::string& file) {
    std::string text;
    if (!ReadWholeFile(file, text)) throw RuntimeError(kErrFileNotFound, "File not found: " + file);
    Records records;
    std::vector<std::string> fields = SplitInputFields(text);
    for (size_t i = 0; i < fields.size(); i += 2) {
        if (static_cast<int>(records.size()) >= kConfigTableRows)
            throw RuntimeError(kErrSubscriptOutOfRange, "Subscript out of range");
        records.emplace_back(fields[i], i + 1 < fields.size() ? fields[i + 1] : std::string());
    }
    return records;
}

void RequireWritableTarget(const std::string& file) {
    struct stat st {};
    if (::stat(file.c_str(), &st) == 0 && (!(st.st_mode & S_IWUSR) || S_ISDIR(st.st_mode)))
        throw RuntimeError(kErrPathFileAccess, "Path/File access error: " + file);
}

bool ConfigWritable() {
    const std::string& cfg = Paths().TracelabCfgPath;
    return FileReadable(cfg) && FileWriteable(cfg);
}

}  // namespace

std::vector<std::string> SplitInputFields(const std::string& text) {
    auto blank = [](char c) { return c == ' ' || c == '\t'; };
    auto lineEnd = [](char c) { return c == '\r' || c == '\n'; };
    std::vector<std::string> fields;
    const size_t n = text.size();
    size_t i = 0;
    while (true) {
        // Blanks and empty lines before a field are passed over.
        while (i < n && (blank(text[i]) || lineEnd(text[i]))) ++i;
        if (i >= n) break;
        std::string field;
        if (text[i] == '"') {
            const size_t close = text.find('"', i + 1);
            if (close == std::string::npos) {
                field = text.substr(i + 1);
                i = n;
            } else {
                field = text.substr(i + 1, close - i - 1);
                i = close + 1;
            }
            // Whatever follows the closing quote up to the separator is ignored.
            while (i < n && text[i] != ',' && !lineEnd(text[i])) ++i;
        } else {
            const size_t start = i;
            while (i < n && text[i] != ',' && !lineEnd(text[i])) ++i;
            field = text.substr(start, i - start);
            while (!field.empty() && blank(field.back())) field.pop_back();
        }
        if (i < n && text[i] == ',') ++i;
        fields.push_back(std::move(field));
    }
    return fields;
}

std::vector<std::pair<std::string, std::string>> ReadConfigRecords(const std::string& file) {
    std::string text;
    Records records;
    if (!ReadWholeFile(file, text)) return records;
    std::vector<std::string> fields = SplitInputFields(text);
    for (size_t i = 0; i < fields.size(); i += 2)
        records.emplace_back(fields[i], i + 1 < fields.size() ? fields[i + 1] : std::string());
    return records;
}

std::string ConfigNumberText(float value) {
    char buf[128];
    auto res = std::to_chars(buf, buf + sizeof buf, value, std::chars_format::fixed);
    if (res.ec != std::errc()) return "0";
    std::string text(buf, res.ptr);
    for (char& c : text)
        if (c == ',') c = '.';
    return text;
}

namespace {

// A stored value as a number.
float ConfigValue(const std::string& text) {
    return static_cast<float>(GetVal_NI(text));
}

}  // namespace

float GetConfig(const std::string& file, const std::string& key) {
    return ProcedureValue("GetConfig", 0.0f, [&]() -> float {
        if (!FileExists(file)) {
            Message("A system file cannot be found\r\n" + file);
            WriteFileAtomically(file, "");
            return 0.0f;
        }
        for (const auto& [k, v] : ReadConfigRecords(file))
            if (k == key) return ConfigValue(v);
        return 0.0f;
    });
}

ConfigSnapshot::ConfigSnapshot(const std::string& file) : file_(file), present_(FileExists(file)) {
    if (!present_) return;
    for (const auto& [key, text] : ReadConfigRecords(file))
        values_.try_emplace(key, ConfigValue(text));
}

float ConfigSnapshot::Get(const std::string& key) const {
    if (!present_) return GetConfig(file_, key);
    const auto it = values_.find(key);
    return it == values_.end() ? 0.0f : it->second;
}

std::string GetConfigString(const std::string& file, const std::string& key) {
    return ProcedureValue("GetConfigString", std::string(), [&]() -> std::string {
        std::string value;
        if (!FileExists(file)) {
            Message("A system file cannot be found" + file);
            WriteFileAtomically(file, "");
        } else {
            bool found = false;
            for (const auto& [k, v] : ReadConfigRecords(file)) {
                if (k == key) {
                    value = v;
                    found = true;
                    break;
                }
            }
            if (!found) LogDebug("Can't find " + key + " in the config file!");
        }
        LogDebug("Get config string from: " + file + " : " + key + "=" + value);
        return value;
    });
}

int GetConfigInt(const std::string& file, const std::string& key) {
    const float value = GetConfig(file, key);
    if (!(value == value)) return 0;
    if (value >= 2147483648.0f) return std::numeric_limits<int>::max();
    if (value < -2147483648.0f) return std::numeric_limits<int>::min();
    return static_cast<int>(value);
}

void SetConfig(const std::string& file, const std::string& key, float value) {
    Procedure("SetConfig", [&] {
        if (!ConfigWritable()) return;
        Records table = ReadConfigTable(file);
        std::string out;
        for (const auto& [k, v] : table) {
            if (k.empty()) break;
            if (k == key) continue;
            out += RecordLine(k, v);
        }
        out += RecordLine(key, ConfigNumberText(value));
        RequireWritableTarget(file);
        if (!WriteFileAtomically(file, out))
            throw RuntimeError(kErrPathFileAccess, "Path/File access error: " + file);
    });
}

bool SetConfigString(const std::string& file, const std::string& key, const std::string& value) {
    Procedure("SetConfigString", [&] {
        if (!ConfigWritable()) return;
        std::string text;
        if (!ReadWholeFile(file, text))
            throw RuntimeError(kErrFileNotFound, "File not found: " + file);
        Records records = ReadConfigRecords(file);
        bool found = false;
        for (auto& [k, v] : records) {
            if (k == key) {
                found = true;
                break;
            }
        }
        RequireWritableTarget(file);
        if (found) {
            // Copied line by line with the new value in the key's line; the
            // lines keep their order. The copy goes through the scratch file
            // and replaces the file in one step.
            std::string out;
            for (auto& [k, v] : records) out += RecordLine(k, k == key ? value : v);
            const std::string& temp =
                Paths().TempDatPath.empty() ? file + ".tmp" : Paths().TempDatPath;
            if (!WriteFileAtomically(temp, out))
                throw RuntimeError(kErrPathFileAccess, "Path/File access error: " + temp);
            std::error_code ec;
            fs::rename(temp, file, ec);
            if (ec) {
                if (!CopyFileReplacing(temp, file))
                    throw RuntimeError(kErrPathFileAccess, "Path/File access error: " + file);
                DeleteFileIfPresent(temp);
            }
        } else {
            std::ofstream out(file, std::ios::binary | std::ios::app);
            out << RecordLine(key, value);
            if (!out) throw RuntimeError(kErrPathFileAccess, "Path/File access error: " + file);
        }
    });
    return true;
}

void RemoveUserVarsFromConfig() {
    Procedure("RemoveUserVarsFromConfig", [&] {
        const std::string& file = Paths().TracelabCfgPath;
        if (!FileReadable(file)) return;
        Records table = ReadConfigTable(file);
        std::string out;
        for (const auto& [k, v] : table) {
            if (k.empty()) break;
            if (k.rfind("U:", 0) == 0) {
                LogDebug(k + "removed from the config file");
                continue;
            }
            out += RecordLine(k, v);
        }
        RequireWritableTarget(file);
        if (!WriteFileAtomically(file, out))
            throw RuntimeError(kErrPathFileAccess, "Path/File access error: " + file);
    });
}

bool FileExists(std::string& path) {
    if (size_t nul = path.find('\0'); nul != std::string::npos) path.resize(nul);
    for (char& c : path)
        if (c == '"') c = ' ';
    path = Trim(path);
    std::error_code ec;
    bool exists = !path.empty() && fs::exists(fs::path(path), ec);
    if (!exists) LogDebug(path + " cannot be found, sorry!");
    return exists;
}

bool FileExists(const std::string& path) {
    std::string copy = path;
    return FileExists(copy);
}

bool FileReadable(const std::string& path) {
    int fd = path.empty() ? -1 : ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    bool ok = fd >= 0;
    if (ok) {
        struct stat st {};
        ok = ::fstat(fd, &st) == 0 && !S_ISDIR(st.st_mode);
        ::close(fd);
    }
    if (!ok) LogDebug(path + " is locked for some reason");
    return ok;
}

bool FileWriteable(const std::string& path) {
    bool ok = !path.empty();
    if (ok) {
        struct stat st {};
        if (::stat(path.c_str(), &st) == 0 && (S_ISDIR(st.st_mode) || !(st.st_mode & S_IWUSR)))
            ok = false;
    }
    if (ok) {
        int fd = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666);
        ok = fd >= 0;
        if (ok) ::close(fd);
    }
    if (!ok) LogDebug(path + " is locked for some reason");
    return ok;
}

std::string ExtractFileName(const std::string& path) {
    std::string s = Trim(path);
    if (s.empty()) return "No Name";
    size_t slash = s.find_last_of("\\/");
    std::string last = slash == std::string::npos ? s : s.substr(slash + 1);
    if (size_t dot = last.find('.'); dot != std::string::npos) last.resize(dot);
    return last;
}

bool WriteFileAtomically(const std::string& path, const std::string& bytes) {
    if (path.empty()) return false;
    AtomicFileWriter out(path);
    out.Write(bytes.data(), bytes.size());
    return out.Commit();
}

bool CopyFileReplacing(const std::string& from, const std::string& to) {
    std::string bytes;
    if (!ReadWholeFile(from, bytes)) return false;
    return WriteFileAtomically(to, bytes);
}

bool DeleteFileIfPresent(const std::string& path) {
    std::error_code ec;
    return fs::remove(path, ec);
}

}  // namespace tl
