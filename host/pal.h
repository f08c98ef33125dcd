// What the runtime host needs of the operating system (POSIX paths with '/').
#pragma once

#include <cstdarg>
#include <cstdint>
#include <string>
#include <vector>

namespace pal {

using string_t = std::string;
using dll_t = void*;

// readlink("/proc/self/exe"); "" when it fails.
string_t get_entry_point_exe();
// True when the variable exists and is non-empty; a missing one empties *out.
bool getenv(const char* name, string_t* out);
long to_int(const char* text);
// True when the path opens for reading as a file stream (directories do, on Linux).
bool is_file_exists(const string_t& path);

// "path/part" ('/' added even after a trailing one); "part" when path is empty.
void path_append(string_t& path, const string_t& part);
// Text before the last '/', or "".
string_t path_get_directory(const string_t& path);
bool path_is_relative(const string_t& path);

inline string_t build_path(string_t base) { return base; }
template <typename Part, typename... Rest>
string_t build_path(string_t base, const Part& part, const Rest&... rest) {
    path_append(base, string_t(part));
    return build_path(std::move(base), rest...);
}

string_t join(const std::vector<string_t>& list, char separator, bool unique);
string_t join_unique(const std::vector<string_t>& list, char separator);
// Like join, with relative entries first made build_path(base, entry).
string_t join_to_full_path(const string_t& base, const std::vector<string_t>& list, char separator);

// dlopen(RTLD_NOW | RTLD_GLOBAL); NULL on failure.
dll_t load_library(const string_t& path);
// A copy already mapped in the process, without loading one (RTLD_NOLOAD).
bool get_module(const string_t& path, dll_t* out_handle);
void* get_symbol(dll_t handle, const char* name);
void free_library(dll_t handle);

// Formatted text, then "\r\n", to standard output / standard error.
void out_vprintf(const char* format, va_list args);
void err_vprintf(const char* format, va_list args);

// The highest netcore<major>.<minor> subfolder of root that holds file_name.
bool get_major_netcore_path(const string_t& root, const string_t& file_name, string_t* found);
// One entry per subfolder of root (root/name/debug in debug mode); "pygfx" folders last.
void get_app_folders(const string_t& root, bool debug, std::vector<string_t>* list);

}  // namespace pal

struct NetcoreVersion {
    int32_t major = 0;
    int32_t minor = 0;
    bool operator<(const NetcoreVersion& other) const {
        return major != other.major ? major < other.major : minor < other.minor;
    }
};

struct NetcoreFolder {
    NetcoreVersion version;
    std::string name;
    bool operator<(const NetcoreFolder& other) const { return version < other.version; }
};

// Accepts exactly "netcore<digits>.<digits>"; throws std::out_of_range ("stoi") past int32.
bool try_parse(const std::string& name, NetcoreVersion* version);
