#include "host/exchange_host.h"

#include "host/host_environment.h"
#include "host/managed_binding.h"

const char* const ExchangeHostTypeName = "Quorix.WrpGen.Interop.ExchangeHost";

ExchangeHost& ExchangeHost::get_instance() {
    static ExchangeHost host;
    return host;
}

bool ExchangeHost::initialize(const char* assembly) {
    assembly_ = assembly;
    const HostEnvironment* host = HostEnvironment::current();
    struct Binding {
        const char* method;
        void** slot;
    };
    const Binding bindings[] = {
        {"GetTypeName", slot_of(get_type_name_)},
        {"SetExceptionCallback", slot_of(set_exception_callback_)},
        {"SetCatchAndClearErrorCallback", slot_of(set_catch_and_clear_error_callback_)},
        {"SetU16StrBuilderCallback", slot_of(set_u16_bytes_builder_callback_)},
        {"SetPyStrBuilderCallback", slot_of(set_py_str_builder_callback_)},
        {"SetPyUnraisableStrBuilderCallback", slot_of(set_py_unraisable_str_builder_)},
        {"SetPyBytesBuilderCallback", slot_of(set_py_bytes_builder_callback_)},
        {"SetPyObjApiCallbacks", slot_of(set_py_obj_api_callbacks_)},
        {"SetPyStaticCallbacks", slot_of(set_py_static_callbacks_)},
        {"SetPyGenericCallbacks", slot_of(set_py_generic_callbacks_)},
        {"SetPyToCsReglTpFx", slot_of(set_regltp_pytocsfx_)},
        {"SetPyExceptionCallbacks", slot_of(set_py_exception_callbacks_)},
        {"FreeInstance", slot_of(free_instance_)},
        {"FreeInstance", slot_of(free_struct_)},  // structures are boxed: one managed free serves both
        {"InitServices", slot_of(init_services_)},
        {"BoxStcTarget", slot_of(box_stc_target_)},
    };
    for (const Binding& binding : bindings)
        if (!bind_managed_method(host, assembly_.c_str(), ExchangeHostTypeName, binding.method, binding.slot, &error_))
            return false;
    bound_ = true;
    return true;
}
