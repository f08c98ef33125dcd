#include "host/pal.h"

#include <dirent.h>
#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <set>

#include "host/trace.h"
#include "host/utils.h"

namespace pal {

string_t get_entry_point_exe() {
    char buffer[4096];
    ssize_t size = ::readlink("/proc/self/exe", buffer, sizeof(buffer) - 1);
    if (size < 0)
        return string_t();
    return string_t(buffer, static_cast<size_t>(size));
}

bool getenv(const char* name, string_t* out) {
    const char* value = ::getenv(name);
    if (value != nullptr && value[0] != '\0') {
        out->assign(value);
        return true;
    }
    out->clear();
    return false;
}

long to_int(const char* text) { return ::strtol(text, nullptr, 10); }

bool is_file_exists(const string_t& path) {
    std::ifstream stream(path);
    return stream.is_open();
}

void path_append(string_t& path, const string_t& part) {
    if (path.empty()) {
        path = part;
        return;
    }
    path.push_back('/');
    path.append(part);
}

string_t path_get_directory(const string_t& path) {
    auto slash = path.rfind('/');
    return slash == string_t::npos ? string_t() : path.substr(0, slash);
}

bool path_is_relative(const string_t& path) { return path.empty() || path[0] != '/'; }

string_t join(const std::vector<string_t>& list, char separator, bool unique) {
    string_t result;
    std::set<string_t> seen;
    bool first = true;
    for (const auto& entry : list) {
        if (unique && !seen.insert(entry).second)
            continue;
        if (!first)
            result.push_back(separator);
        result.append(entry);
        first = false;
    }
    return result;
}

string_t join_unique(const std::vector<string_t>& list, char separator) { return join(list, separator, true); }

string_t join_to_full_path(const string_t& base, const std::vector<string_t>& list, char separator) {
    std::vector<string_t> full;
    full.reserve(list.size());
    for (const auto& entry : list)
        full.push_back(path_is_relative(entry) ? build_path(base, entry) : entry);
    return join(full, separator, false);
}

dll_t load_library(const string_t& path) { return ::dlopen(path.c_str(), RTLD_NOW | RTLD_GLOBAL); }

bool get_module(const string_t& path, dll_t* out_handle) {
    *out_handle = ::dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD);
    return *out_handle != nullptr;
}

void* get_symbol(dll_t handle, const char* name) { return ::dlsym(handle, name); }

void free_library(dll_t handle) { ::dlclose(handle); }

// The line end goes out as its own write: the text alone may be a partial line for readers.
static void print_line(FILE* stream, const char* format, va_list args) {
    ::vfprintf(stream, format, args);
    ::fwrite("\r\n", 1, 2, stream);
    ::fflush(stream);
}

void out_vprintf(const char* format, va_list args) { print_line(stdout, format, args); }
void err_vprintf(const char* format, va_list args) { print_line(stderr, format, args); }

// Owns an open directory stream.
class DirReader {
public:
    explicit DirReader(const string_t& path) : dir_(::opendir(path.c_str())) {}
    ~DirReader() {
        if (dir_ != nullptr)
            ::closedir(dir_);
    }
    DirReader(const DirReader&) = delete;
    DirReader& operator=(const DirReader&) = delete;
    bool is_open() const { return dir_ != nullptr; }
    // Next subdirectory name other than "." and "..", by the entry's type field; false at the end.
    bool next_subdirectory(string_t* name) {
        while (struct dirent* entry = ::readdir(dir_)) {
            if (entry->d_type != DT_DIR)
                continue;
            if (::strcmp(entry->d_name, ".") == 0 || ::strcmp(entry->d_name, "..") == 0)
                continue;
            name->assign(entry->d_name);
            return true;
        }
        return false;
    }

private:
    DIR* dir_;
};

bool get_major_netcore_path(const string_t& root, const string_t& file_name, string_t* found) {
    std::vector<NetcoreFolder> folders;
    {
        DirReader reader(root);
        if (!reader.is_open())
            return false;
        string_t name;
        while (reader.next_subdirectory(&name)) {
            NetcoreFolder folder;
            if (try_parse(name, &folder.version)) {
                folder.name = name;
                folders.push_back(std::move(folder));
            }
        }
    }
    std::stable_sort(folders.begin(), folders.end());
    for (auto it = folders.rbegin(); it != folders.rend(); ++it) {
        string_t candidate = build_path(root, it->name);
        if (is_file_exists(build_path(candidate, file_name))) {
            *found = std::move(candidate);
            return true;
        }
    }
    return false;
}

void get_app_folders(const string_t& root, bool debug, std::vector<string_t>* list) {
    DirReader reader(root);
    if (!reader.is_open())
        return;
    std::vector<string_t> last;
    string_t name;
    while (reader.next_subdirectory(&name)) {
        string_t path = root;
        if (path.empty() || path.back() != '/')
            path.push_back('/');
        path.append(name);
        if (debug) {
            path.append("/debug");
            if (!is_file_exists(path))
                continue;
        }
        if (name == "pygfx")
            last.push_back(std::move(path));
        else
            list->insert(list->begin(), std::move(path));
    }
    list->insert(list->end(), last.begin(), last.end());
}

}  // namespace pal

static bool split_version(const std::string& text, std::string* major, std::string* minor) {
    auto dot = text.find('.');
    if (dot == std::string::npos || text.find('.', dot + 1) != std::string::npos)
        return false;
    *major = cxxaw_substr(text, 0, dot);
    *minor = cxxaw_substr(text, dot + 1);
    return true;
}

static bool try_parse_int(const std::string& text, int32_t* value) {
    if (!cxxaw_isdigitstr(text))
        return false;
    *value = std::stoi(text);  // out of int32 range: std::out_of_range("stoi"), deliberately uncaught
    return true;
}

bool try_parse(const std::string& name, NetcoreVersion* version) {
    static const std::string prefix = "netcore";
    if (name.compare(0, prefix.size(), prefix) != 0)
        return false;
    std::string major, minor;
    if (!split_version(cxxaw_substr(name, prefix.size()), &major, &minor))
        return false;
    NetcoreVersion parsed;
    if (!try_parse_int(major, &parsed.major) || !try_parse_int(minor, &parsed.minor))
        return false;
    *version = parsed;
    return true;
}
