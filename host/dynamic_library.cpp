#include "host/dynamic_library.h"

#include <stdexcept>

#include "host/trace.h"

DynamicLibrary::DynamicLibrary(DynamicLibrary&& other) noexcept
    : can_free_(other.can_free_), handle_(other.handle_), first_load_(other.first_load_) {
    other.handle_ = nullptr;
}

DynamicLibrary& DynamicLibrary::operator=(DynamicLibrary&& other) noexcept {
    if (this != &other) {
        free();
        can_free_ = other.can_free_;
        handle_ = other.handle_;
        first_load_ = other.first_load_;
        other.handle_ = nullptr;
    }
    return *this;
}

DynamicLibrary DynamicLibrary::load(const std::string& path, const std::string& name) {
    DynamicLibrary library;
    if (!try_load(path, name, &library))
        throw std::runtime_error("DynamicLibrary::load");
    return library;
}

bool DynamicLibrary::try_load(const std::string& path, const std::string& /*name*/, DynamicLibrary* library) {
    library->free();
    trace::info("Try get module...");
    pal::dll_t handle = nullptr;
    if (pal::get_module(path, &handle)) {
        library->handle_ = handle;
        library->first_load_ = false;
        trace::info("Using existed module...");
        return true;
    }
    trace::info("No existed module...");
    handle = pal::load_library(path);
    if (handle == nullptr) {
        trace::info("No module...");
        trace::verbose("No: '%s'", path.c_str());
        return false;
    }
    library->handle_ = handle;
    library->first_load_ = true;
    return true;
}

bool DynamicLibrary::free() {
    if (handle_ == nullptr)
        return false;
    if (can_free_) {
        pal::free_library(handle_);
        handle_ = nullptr;
    }
    return true;
}
