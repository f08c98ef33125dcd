#include "host/clr_host.h"

#include <Python.h>

#include "builtins/callback_tables.h"
#include "host/exchange_host.h"
#include "host/fork_guard.h"
#include "host/host_environment.h"
#include "host/object_host.h"
#include "module/pysh.h"
#include "module/pysh_lock.h"

int initialize_clr_host(const char* runtime_dir, const char* assembly, bool debug, const char* company,
                        const char* product) {
    // A sibling that first joins in a forked child would join a runtime that cannot run there.
    if (host_in_forked_child()) {
        PyShlErr_ForkedChild();
        return -1;
    }
    HostEnvironment::instance(runtime_dir, debug, company, product, nullptr, nullptr);

    ExchangeHost& exchange = ExchangeHost::get_instance();
    if (!exchange.initialize(assembly)) {
        PyErr_SetString(PyExc_TypeError, exchange.error_msg().c_str());
        return -1;
    }
    // The order is the managed side's expectation; every callback is in place before InitServices.
    // Each takes the interpreter lock: a long managed call may have released it.
    exchange.set_exception_callback(PyShLocked_Entry<&on_clr_exception>());
    exchange.set_catch_and_clear_error_callback(PyShLocked_Entry<&fn_catch_and_clear_py_error>());
    exchange.set_u16_bytes_builder_callback(PyShLocked_Entry<&fn_create_u16_buffer>());
    exchange.set_py_str_builder_callback(PyShLocked_Entry<&fn_conv_clr_string_to_py_string>());
    exchange.set_py_unraisable_str_builder(PyShLocked_Entry<&fn_conv_clr_string_to_py_unraisable>());
    exchange.set_py_obj_api_callbacks(m_py_obj_api_callbacks);
    exchange.set_py_static_callbacks(m_all_statconceptp_pytocsfx);
    exchange.set_py_generic_callbacks(m_all_genconcptp_pytocsfx);
    exchange.set_regltp_pytocsfx(m_all_regltp_pytocsfx);
    exchange.set_py_bytes_builder_callback(PyShLocked_Entry<&fn_conv_clr_bytes_to_py_bytes>());
    exchange.set_py_exception_callbacks(m_py_exception_callbacks);
    if (exchange.init_services() < 0) {
        if (!PyErr_Occurred())
            PyErr_SetString(PyExc_TypeError, "the managed services of the interop assembly did not start");
        return -1;
    }

    const ObjectHost& objects = ObjectHost::get_instance();
    if (objects.is_not_valid()) {
        PyErr_SetString(PyExc_TypeError, objects.error_msg().c_str());
        return -1;
    }
    return 0;
}
