// The runtime-wrapper library: a thin C layer over libcoreclr.so's hosting functions that
// keeps the one runtime handle and domain of the process, so that every extension module of
// the family that loads this library shares them.
#include <dlfcn.h>

#include <cstdint>

namespace {

using coreclr_initialize_ptr = int (*)(const char* exe_path, const char* app_domain_friendly_name,
                                       int property_count, const char** property_keys,
                                       const char** property_values, void** host_handle, unsigned int* domain_id);
using coreclr_shutdown_ptr = int (*)(void* host_handle, unsigned int domain_id);
using coreclr_create_delegate_ptr = int (*)(void* host_handle, unsigned int domain_id,
                                            const char* entry_point_assembly_name,
                                            const char* entry_point_type_name, const char* entry_point_method_name,
                                            void** delegate);

// HRESULTs reported when the runtime is not in a state to answer.
constexpr int32_t kNotLoaded = static_cast<int32_t>(0x80004005);      // E_FAIL
constexpr int32_t kNotInitialized = static_cast<int32_t>(0x8000FFFF); // E_UNEXPECTED

struct Runtime {
    void* library = nullptr;
    coreclr_initialize_ptr initialize = nullptr;
    coreclr_shutdown_ptr shutdown = nullptr;
    coreclr_create_delegate_ptr create_delegate = nullptr;
    void* host_handle = nullptr;
    unsigned int domain_id = 0;
    bool domain_initialized = false;
};

Runtime g_runtime;

}  // namespace

#define QRX_EXPORT extern "C" __attribute__((visibility("default")))

// Non-zero when libcoreclr.so is loaded and its three hosting functions are resolved.
QRX_EXPORT int coreclr_wrap_load(const char* libcoreclr_path) {
    if (g_runtime.library != nullptr)
        return 1;
    void* library = ::dlopen(libcoreclr_path, RTLD_NOW | RTLD_GLOBAL);
    if (library == nullptr)
        return 0;
    auto initialize = reinterpret_cast<coreclr_initialize_ptr>(::dlsym(library, "coreclr_initialize"));
    auto shutdown = reinterpret_cast<coreclr_shutdown_ptr>(::dlsym(library, "coreclr_shutdown"));
    auto create_delegate = reinterpret_cast<coreclr_create_delegate_ptr>(::dlsym(library, "coreclr_create_delegate"));
    if (initialize == nullptr || shutdown == nullptr || create_delegate == nullptr) {
        ::dlclose(library);
        return 0;
    }
    g_runtime.library = library;
    g_runtime.initialize = initialize;
    g_runtime.shutdown = shutdown;
    g_runtime.create_delegate = create_delegate;
    return 1;
}

QRX_EXPORT int32_t coreclr_wrap_initialize(const char* exe_path, const char* domain_name, int property_count,
                                           const char** keys, const char** values) {
    if (g_runtime.initialize == nullptr)
        return kNotLoaded;
    if (g_runtime.domain_initialized)
        return kNotInitialized;  // one runtime per process: a second domain is refused
    int status = g_runtime.initialize(exe_path, domain_name, property_count, keys, values,
                                      &g_runtime.host_handle, &g_runtime.domain_id);
    if (status >= 0)
        g_runtime.domain_initialized = true;
    return status < 0 ? status : 0;
}

QRX_EXPORT int32_t coreclr_wrap_create_delegate(const char* assembly, const char* type, const char* method,
                                                void** out_delegate) {
    if (!g_runtime.domain_initialized)
        return kNotInitialized;
    return g_runtime.create_delegate(g_runtime.host_handle, g_runtime.domain_id, assembly, type, method,
                                     out_delegate);
}

QRX_EXPORT int32_t coreclr_wrap_shutdown() {
    if (!g_runtime.domain_initialized)
        return kNotInitialized;
    int status = g_runtime.shutdown(g_runtime.host_handle, g_runtime.domain_id);
    g_runtime.domain_initialized = false;
    g_runtime.host_handle = nullptr;
    return status;
}

QRX_EXPORT int coreclr_wrap_is_domain_initialized() { return g_runtime.domain_initialized ? 1 : 0; }
