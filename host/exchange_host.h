// General managed entry points every wrapper needs: the callbacks handed to managed code,
// freeing and boxing of GC handles, type names.
#pragma once

#include <cstdint>
#include <string>

#include "host/fork_guard.h"

class ExchangeHost {
public:
    static ExchangeHost& get_instance();

    // Binds every slot in table order; false at the first failure, with error_msg() set.
    bool initialize(const char* assembly);

    // 1 with *out_str a new Python str of the handle's managed type name; 0 on failure.
    int get_type_name(void* handle, void** out_str) const { return get_type_name_(handle, out_str); }
    void set_exception_callback(void* fn) const { set_exception_callback_(fn); }
    void set_catch_and_clear_error_callback(void* fn) const { set_catch_and_clear_error_callback_(fn); }
    void set_u16_bytes_builder_callback(void* fn) const { set_u16_bytes_builder_callback_(fn); }
    void set_py_str_builder_callback(void* fn) const { set_py_str_builder_callback_(fn); }
    void set_py_unraisable_str_builder(void* fn) const { set_py_unraisable_str_builder_(fn); }
    void set_py_bytes_builder_callback(void* fn) const { set_py_bytes_builder_callback_(fn); }
    void set_py_obj_api_callbacks(void* const* table) const { set_py_obj_api_callbacks_(table); }
    void set_py_static_callbacks(void* const* table) const { set_py_static_callbacks_(table); }
    void set_py_generic_callbacks(void* const* table) const { set_py_generic_callbacks_(table); }
    void set_regltp_pytocsfx(void* const* table) const { set_regltp_pytocsfx_(table); }
    void set_py_exception_callbacks(void* const* table) const { set_py_exception_callbacks_(table); }
    // In a forked child the handle is left alone: the runtime there cannot run (fork_guard.h).
    void free_instance(void* handle) const {
        if (!host_in_forked_child())
            free_instance_(handle);
    }
    void free_struct(void* handle) const {
        if (!host_in_forked_child())
            free_struct_(handle);
    }
    // 0 when the managed services started, -1 with the Python error raised through the callback.
    int init_services() const { return init_services_(); }
    // 1 with *out_handle a new handle to a boxed copy of the structure; 0 on failure.
    int box_stc_target(void* handle, void** out_handle) const { return box_stc_target_(handle, out_handle); }

    const char* get_assembly_name() const { return assembly_.c_str(); }
    const std::string& error_msg() const { return error_; }
    bool is_bound() const { return bound_; }

private:
    ExchangeHost() = default;
    ExchangeHost(const ExchangeHost&) = delete;
    ExchangeHost& operator=(const ExchangeHost&) = delete;

    int (*get_type_name_)(void*, void**) = nullptr;
    void (*set_exception_callback_)(void*) = nullptr;
    void (*set_catch_and_clear_error_callback_)(void*) = nullptr;
    void (*set_u16_bytes_builder_callback_)(void*) = nullptr;
    void (*set_py_str_builder_callback_)(void*) = nullptr;
    void (*set_py_unraisable_str_builder_)(void*) = nullptr;
    void (*set_py_bytes_builder_callback_)(void*) = nullptr;
    void (*set_py_obj_api_callbacks_)(void* const*) = nullptr;
    void (*set_py_static_callbacks_)(void* const*) = nullptr;
    void (*set_py_generic_callbacks_)(void* const*) = nullptr;
    void (*set_regltp_pytocsfx_)(void* const*) = nullptr;
    void (*set_py_exception_callbacks_)(void* const*) = nullptr;
    void (*free_instance_)(void*) = nullptr;
    void (*free_struct_)(void*) = nullptr;
    int (*init_services_)() = nullptr;
    int (*box_stc_target_)(void*, void**) = nullptr;

    std::string assembly_;
    std::string error_;
    bool bound_ = false;
};

extern const char* const ExchangeHostTypeName;  // "Quorix.WrpGen.Interop.ExchangeHost"
