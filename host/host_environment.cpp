#include "host/host_environment.h"

#include <cstdlib>
#include <stdexcept>
#include <vector>

#include "host/core_clr_init_exception.h"
#include "host/fork_guard.h"
#include "host/pal.h"
#include "host/trace.h"

const char* const QuorixDomainName = "QuorixCLRHostDomain";
const char* const HostNotReady = "CLR Host is not ready";

namespace {

constexpr const char* kWrapperFileName = "libquorix.embed.coreclrwrap.so";
constexpr const char* kWrapperDebugFileName = "libquorix.embed.coreclrwrap.debug.so";
constexpr const char* kCoreClrFileName = "libcoreclr.so";

HostEnvironment* g_constructed = nullptr;

// E_UNEXPECTED, the status a caller gets when asking a host that never started.
constexpr int32_t kHostNotStarted = static_cast<int32_t>(0x8000FFFF);

std::string company_variable(const char* base, const char* company) {
    std::string name(base);
    name.push_back('_');
    name.append(company);
    return name;
}

}  // namespace

HostEnvironment::HostEnvironment() { g_constructed = this; }

HostEnvironment::~HostEnvironment() {
    // Runs at process exit; an exception here ends the process, as it must. A forked child
    // has no runtime threads to shut down: waiting for them would never end.
    if (!host_in_forked_child())
        try_shutdown_default_app_domain();
    g_constructed = nullptr;
}

HostEnvironment* HostEnvironment::current() { return g_constructed; }

HostEnvironment& HostEnvironment::instance(const char* runtime_dir, bool debug, const char* company,
                                           const char* product, const char* runtime_dir_override,
                                           const char* assembly_dir_override) {
    static HostEnvironment host;  // destroyed at process exit
    if (host.wrapper_.handle() != nullptr)
        return host;
    trace::initialize();
    host.initialize(runtime_dir, debug, company, product, runtime_dir_override, assembly_dir_override);
    if (host.wrapper_.is_first_load())
        host.create_default_app_domain();
    else
        host.domain_ready_ = host.is_domain_initialized_() != 0;
    return host;
}

void HostEnvironment::initialize(const char* /*runtime_dir*/, bool debug, const char* company,
                                 const char* /*product*/, const char* runtime_dir_override,
                                 const char* assembly_dir_override) {
    trace::info("Initializing .NET Core host...");
    // With write-xor-execute on, the runtime maps its code memory twice from one shared file.
    // A forked child shares those pages with this process instead of copying them, so anything
    // the child's runtime writes there lands in our code. Private mappings are copied on write.
    // Set before the runtime library is loaded, whatever the environment said.
    ::setenv("DOTNET_EnableWriteXorExecute", "0", 1);
    exe_path_ = pal::get_entry_point_exe();
    debug_ = debug;
    const std::string wrapper_name = get_libcoreclr_wrap_name();
    const std::string exe_dir = pal::path_get_directory(exe_path_);

    if (runtime_dir_override != nullptr) {
        netcore_dir_ = runtime_dir_override;
    } else {
        std::string root;
        if (pal::getenv(company_variable("NETCORE_WRAPPER_NETCORE_DIR", company).c_str(), &root)) {
            // The release name even in debug mode: the folder is chosen by the release build.
            if (!pal::get_major_netcore_path(root, kWrapperFileName, &netcore_dir_))
                netcore_dir_ = exe_dir;
        } else {
            netcore_dir_ = exe_dir;
        }
    }
    trace::info("NETCORE_DIR: '%s'", netcore_dir_.c_str());

    std::vector<std::string> folders;
    if (assembly_dir_override != nullptr) {
        folders.emplace_back(assembly_dir_override);
    } else {
        std::string root;
        if (pal::getenv(company_variable("NETCORE_WRAPPER_ASSEMBLY_DIR", company).c_str(), &root))
            pal::get_app_folders(root, debug, &folders);
        else
            folders.push_back(exe_dir);
    }
    complete_app_folders(folders, netcore_dir_);
    product_assembly_dir_ = pal::join(folders, ':', false);
    trace::info("PRODUCT_ASSEMBLY_DIR: '%s'", product_assembly_dir_.c_str());

    const std::string wrapper_path = pal::build_path(netcore_dir_, wrapper_name);
    trace::verbose("Loading: '%s'", wrapper_path.c_str());
    DynamicLibrary wrapper = DynamicLibrary::load(wrapper_path, wrapper_name);
    trace::info("wrap dll loaded");
    wrapper.set_can_free(false);  // the runtime lives until the process ends

    initialize_ = reinterpret_cast<initialize_fn>(resolve(wrapper, "coreclr_wrap_initialize"));
    create_delegate_ = reinterpret_cast<create_delegate_fn>(resolve(wrapper, "coreclr_wrap_create_delegate"));
    shutdown_ = reinterpret_cast<shutdown_fn>(resolve(wrapper, "coreclr_wrap_shutdown"));
    is_domain_initialized_ =
        reinterpret_cast<is_domain_initialized_fn>(resolve(wrapper, "coreclr_wrap_is_domain_initialized"));

    if (wrapper.is_first_load()) {
        auto load = reinterpret_cast<load_fn>(resolve(wrapper, "coreclr_wrap_load"));
        const std::string coreclr_path = pal::build_path(netcore_dir_, kCoreClrFileName);
        trace::verbose("Loading2: '%s'", coreclr_path.c_str());
        if (load(coreclr_path.c_str()) == 0)
            throw std::runtime_error("init coreclr wap");
    }
    // Only now is the host started: a throw above leaves it to be tried again.
    wrapper_ = std::move(wrapper);
    trace::info(".NET Core host ready.");
}

void* HostEnvironment::resolve(const DynamicLibrary& library, const char* name) const {
    if (library.handle() == nullptr)
        throw std::logic_error("Library was not opened!");
    void* symbol = pal::get_symbol(library.handle(), name);
    if (symbol == nullptr)
        throw std::runtime_error(std::string("No such symbol: ") + name);
    return symbol;
}

int HostEnvironment::create_default_app_domain() {
    if (domain_ready_)
        return 0;
    trace::info("Creating default AppDomain...");
    const std::string app_paths = product_assembly_dir_;
    const std::string app_ni_paths = product_assembly_dir_;
    const std::string native_dirs = product_assembly_dir_;
    trace::verbose("APP_PATH: '%s'", app_paths.c_str());
    trace::verbose("APP_NI_PATHS: '%s'", app_ni_paths.c_str());
    trace::verbose("NATIVE_DLL_SEARCH_DIRECTORIES: '%s'", native_dirs.c_str());

    const char* keys[] = {"TRUSTED_PLATFORM_ASSEMBLIES", "APP_PATHS", "APP_NI_PATHS",
                          "NATIVE_DLL_SEARCH_DIRECTORIES", "AppDomainCompatSwitch"};
    const char* values[] = {"", app_paths.c_str(), app_ni_paths.c_str(), native_dirs.c_str(),
                            "UseLatestBehaviorWhenTFMNotSpecified"};
    constexpr int count = sizeof(keys) / sizeof(keys[0]);
    trace::verbose("HOST_EXE_PATH: '%s'", exe_path_.c_str());

    int32_t status = initialize_(exe_path_.c_str(), QuorixDomainName, count, keys, values);
    if (status != 0)
        throw CoreClrInitException(status, exe_path_.c_str(), QuorixDomainName, count, keys, values);
    domain_ready_ = true;
    trace::info("Default AppDomain ready.");
    return 1;
}

int HostEnvironment::try_shutdown_default_app_domain() {
    if (shutdown_ == nullptr || !domain_ready_)
        return -1;
    if (wrapper_.handle() == nullptr || !wrapper_.is_first_load()) {
        domain_ready_ = false;  // the first loader owns the runtime
        return -1;
    }
    trace::info("Shutdowning .NET Core host...");
    int32_t status = shutdown_();
    trace::info(".NET Core host is down: %d", status);
    domain_ready_ = false;
    return 0;
}

int32_t HostEnvironment::try_create_delegate(const char* assembly, const char* type, const char* method,
                                             void** out_delegate) const {
    if (create_delegate_ == nullptr)
        return kHostNotStarted;
    return create_delegate_(assembly, type, method, out_delegate);
}

std::string HostEnvironment::get_libcoreclr_wrap_name() const {
    return debug_ ? kWrapperDebugFileName : kWrapperFileName;
}

void HostEnvironment::complete_app_folders(std::vector<std::string>& folders, const std::string& dir) {
    for (const auto& folder : folders)
        if (folder == dir)
            return;
    folders.push_back(dir);
}
