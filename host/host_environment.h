// The process-wide runtime host: finds the runtime and the product assemblies, loads the
// runtime-wrapper library, creates (or reuses) the default application domain and hands
// out native-callable pointers to static managed methods.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/dynamic_library.h"

extern const char* const QuorixDomainName;  // "QuorixCLRHostDomain"
extern const char* const HostNotReady;      // "CLR Host is not ready"

class HostEnvironment {
public:
    using load_fn = int (*)(const char* libcoreclr_path);
    using initialize_fn = int32_t (*)(const char* exe_path, const char* domain_name, int property_count,
                                      const char** keys, const char** values);
    using create_delegate_fn = int32_t (*)(const char* assembly, const char* type, const char* method,
                                           void** out_delegate);
    using shutdown_fn = int32_t (*)();
    using is_domain_initialized_fn = int (*)();

    // The one instance, started; throws std::logic_error, std::runtime_error or
    // CoreClrInitException when the runtime cannot be started. Overrides may be NULL.
    static HostEnvironment& instance(const char* runtime_dir, bool debug, const char* company,
                                     const char* product, const char* runtime_dir_override = nullptr,
                                     const char* assembly_dir_override = nullptr);
    // The instance if it was ever constructed, else NULL; never starts anything.
    static HostEnvironment* current();

    // The wrapper library's status, 0 on success; *out_delegate receives the entry point.
    int32_t try_create_delegate(const char* assembly, const char* type, const char* method,
                                void** out_delegate) const;
    // 1 when it created the domain, 0 when it was ready already; throws CoreClrInitException.
    int create_default_app_domain();
    // 0 when it shut the runtime down, -1 otherwise.
    int try_shutdown_default_app_domain();
    std::string get_libcoreclr_wrap_name() const;
    // Appends dir unless an equal string is already listed.
    static void complete_app_folders(std::vector<std::string>& folders, const std::string& dir);

    bool is_domain_ready() const { return domain_ready_; }
    const std::string& runtime_dir() const { return netcore_dir_; }
    const std::string& product_assembly_dirs() const { return product_assembly_dir_; }

    ~HostEnvironment();

private:
    HostEnvironment();
    HostEnvironment(const HostEnvironment&) = delete;
    HostEnvironment& operator=(const HostEnvironment&) = delete;

    void initialize(const char* runtime_dir, bool debug, const char* company, const char* product,
                    const char* runtime_dir_override, const char* assembly_dir_override);
    // The symbol's address; throws std::logic_error / std::runtime_error when missing.
    void* resolve(const DynamicLibrary& library, const char* name) const;

    std::string exe_path_;
    std::string netcore_dir_;
    std::string product_assembly_dir_;
    DynamicLibrary wrapper_;
    initialize_fn initialize_ = nullptr;
    create_delegate_fn create_delegate_ = nullptr;
    shutdown_fn shutdown_ = nullptr;
    is_domain_initialized_fn is_domain_initialized_ = nullptr;
    bool domain_ready_ = false;
    bool debug_ = false;
};
