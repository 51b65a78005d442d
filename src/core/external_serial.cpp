#include "core/external_serial.h"

#include <dlfcn.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <set>

#include "core/build_profile.h"
#include "core/external_serial_api.h"
#include "core/log.h"
#include "core/ui_services.h"

namespace tl {

namespace {

struct Library {
    void* handle = nullptr;
    tl_es_variable_count_fn count = nullptr;
    tl_es_variable_name_fn name = nullptr;
    tl_es_convert_fn convert = nullptr;
    bool passed = false;  // offered to the catalogue only after the test
    std::string overridePath;

    void Unload() {
        if (handle) dlclose(handle);
        handle = nullptr;
        count = nullptr;
        name = nullptr;
        convert = nullptr;
        passed = false;
    }
    bool Load(const std::string& path) {
        Unload();
        handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (!handle) {
            const char* err = dlerror();
            LogDebug(std::string("external serial library not loaded: ") + (err ? err : ""));
            return false;
        }
        count = reinterpret_cast<tl_es_variable_count_fn>(dlsym(handle, "tl_es_variable_count"));
        name = reinterpret_cast<tl_es_variable_name_fn>(dlsym(handle, "tl_es_variable_name"));
        convert = reinterpret_cast<tl_es_convert_fn>(dlsym(handle, "tl_es_convert"));
        return true;
    }
    ~Library() { Unload(); }
};

Library& Lib() {
    static Library lib;
    return lib;
}

const char* kCommsError =
    "An error occoured whilst communicating with \"ExternalSerialConversion.dll\"  ";

}  // namespace

std::string ExternalSerialLibraryPath() {
    if (!Lib().overridePath.empty()) return Lib().overridePath;
    return (std::filesystem::path(Paths().AppDir) / "libExternalSerialConversion.so").string();
}

void SetExternalSerialLibraryPath(const std::string& path) {
    Lib().Unload();
    Lib().overridePath = path;
}

bool ExternalSerialLibraryPresent() {
    std::error_code ec;
    return std::filesystem::is_regular_file(ExternalSerialLibraryPath(), ec);
}

int ExternalSerialVariableCount() {
    Library& lib = Lib();
    if (!lib.passed || !lib.count) return 0;
    const int n = lib.count();
    return n < 0 || n > TL_ES_MAX_VARIABLES ? 0 : n;
}

std::string ExternalSerialVariableName(int n) {
    Library& lib = Lib();
    if (!lib.passed || !lib.name || n < 0 || n >= ExternalSerialVariableCount()) return {};
    const char* s = lib.name(n);
    return s ? std::string(s) : std::string();
}

std::vector<double> ExternalSerialConvert(const std::vector<uint8_t>& bytes) {
    Library& lib = Lib();
    if (!lib.passed || !lib.convert || bytes.size() > 0x7fffffff) return {};
    double values[TL_ES_MAX_VARIABLES] = {};
    const int got =
        lib.convert(bytes.data(), static_cast<int>(bytes.size()), values, TL_ES_MAX_VARIABLES);
    if (got < 0 || got > TL_ES_MAX_VARIABLES) return {};
    return std::vector<double>(values, values + got);
}

bool TestExternalSerialCode() {
    Library& lib = Lib();
    // The messages name the library as the program always has.
    if (!lib.Load(ExternalSerialLibraryPath()) || !lib.count || !lib.name || !lib.convert) {
        Message(kCommsError);
        lib.Unload();
        return false;
    }
    bool result = true;
    const int count = lib.count();
    if (count < 0 || count >= TL_ES_MAX_VARIABLES + 1) {
        Message(" \"ExternalSerialConversion.dll\" is reporting an illegal number of variables");
        result = false;
    } else {
        LogDebug("External serial variables= " + std::to_string(lib.count()));
        std::set<std::string> seen;
        bool namesOk = true;
        for (int n = 0; n < count; ++n) {
            const char* s = lib.name(n);
            const std::string full = "S:" + std::string(s ? s : "");
            if (!s || !*s || !seen.insert(full).second) namesOk = false;
        }
        if (!namesOk) {
            Message(" \"ExternalSerialConversion.dll\" is reporting an illegal variable name(s)");
            result = false;
        }
        std::random_device rd;
        std::mt19937 gen(rd());
        std::vector<uint8_t> block(std::uniform_int_distribution<int>(1, 20)(gen));
        for (auto& b : block)
            b = static_cast<uint8_t>(std::uniform_int_distribution<int>(0, 255)(gen));
        double values[TL_ES_MAX_VARIABLES] = {};
        const int got =
            lib.convert(block.data(), static_cast<int>(block.size()), values, TL_ES_MAX_VARIABLES);
        if (got < 0 || got != count) {
            LogDebug("external serial conversion gave " + std::to_string(got) + " values for " +
                     std::to_string(count) + " variables");
            Message(kCommsError);
            result = false;
        }
    }
    if (result)
        lib.passed = true;
    else
        lib.Unload();
    return result;
}

}  // namespace tl
