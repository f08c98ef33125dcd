#include "objects/host_table.h"

#include "host/exchange_host.h"
#include "host/host_environment.h"
#include "host/managed_binding.h"
#include "module/pysh.h"

namespace {

constexpr const char kReferencedNotInitialized[] = "one or more refereced type is not initialized";

}  // namespace

PyHostTable::PyHostTable(const char* stub_class)
    : assembly_(ExchangeHost::get_instance().get_assembly_name()),
      stub_class_(stub_class),
      host_(HostEnvironment::current()) {}

bool PyHostTable::set_method_ptr(const HostEnvironment* host, const char* method_name, void** slot) {
    // Without a running host every stub reports itself missing;
    // bind_managed_method leaves *slot alone on failure: slots after a failure stay NULL.
    if (bind_managed_method(host, assembly_, stub_class_, method_name, slot, &error_))
        return true;
    is_not_valid_ = true;
    return false;
}

void PyHostTable::bind_all(const PyHostStubSlot* stubs, size_t count) {
    for (size_t i = 0; i < count && !is_not_valid_; ++i)
        set_method_ptr(host_, stubs[i].name, stubs[i].slot);
}

PyHostState PyHostState_Build(const PyHostTable& table, std::initializer_list<PyHostValidityQuery> referenced) {
    PyHostState state;
    if (table.is_not_valid()) {
        state.failed = true;
        state.message = table.error_msg();
        return state;
    }
    for (PyHostValidityQuery query : referenced) {
        if (query(state.message)) {
            state.failed = true;
            state.referenced_failed = true;
            break;
        }
    }
    return state;
}

bool PyHostState_Raise(const PyHostState& state) {
    if (host_in_forked_child()) {
        PyShlErr_ForkedChild();
        return true;
    }
    PyErr_SetString(PyExc_TypeError, state.message.c_str());
    if (state.referenced_failed)
        PyShlErr_ChainFormat(PyExc_TypeError, kReferencedNotInitialized);
    return true;
}
