// An owned handle of a loaded shared library; reuses a copy already mapped in the process.
#pragma once

#include <string>

#include "host/pal.h"

class DynamicLibrary {
public:
    DynamicLibrary() = default;
    ~DynamicLibrary() { free(); }
    DynamicLibrary(DynamicLibrary&& other) noexcept;
    DynamicLibrary& operator=(DynamicLibrary&& other) noexcept;
    DynamicLibrary(const DynamicLibrary&) = delete;
    DynamicLibrary& operator=(const DynamicLibrary&) = delete;

    // Loaded library; throws std::runtime_error("DynamicLibrary::load") when it cannot load.
    static DynamicLibrary load(const std::string& path, const std::string& name);
    // True when *library holds the library, reused or freshly loaded.
    static bool try_load(const std::string& path, const std::string& name, DynamicLibrary* library);

    // Closes the handle when allowed; returns whether there was a handle.
    bool free();
    void set_can_free(bool can_free) { can_free_ = can_free; }
    bool is_first_load() const { return first_load_; }
    pal::dll_t handle() const { return handle_; }

private:
    bool can_free_ = true;
    pal::dll_t handle_ = nullptr;
    bool first_load_ = false;  // set only when this object itself opened the library
};
