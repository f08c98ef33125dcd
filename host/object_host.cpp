#include "host/object_host.h"

#include "host/exchange_host.h"
#include "host/host_environment.h"
#include "host/managed_binding.h"

const char* const ObjectHostTypeName = "Quorix.WrpGen.Interop.ObjectHost";

ObjectHost& ObjectHost::get_instance() {
    static ObjectHost host;
    return host;
}

ObjectHost::ObjectHost() {
    const HostEnvironment* host = HostEnvironment::current();
    const char* assembly = ExchangeHost::get_instance().get_assembly_name();
    struct Binding {
        const char* method;
        void** slot;
    };
    const Binding bindings[] = {
        {"ToStringOfObj", slot_of(to_string_of_obj_)},   {"ToStringOfStc", slot_of(to_string_of_stc_)},
        {"GetHashOfObj", slot_of(get_hash_code_of_obj_)}, {"GetHashOfStc", slot_of(get_hash_code_of_stc_)},
        {"IsEqualsOfObj", slot_of(equals_of_obj_)},       {"IsEqualsOfStc", slot_of(equals_of_stc_)},
        {"IsTypeOf", slot_of(is_type_of_)},               {"GetTypeName", slot_of(get_type_name_)},
        {"GetObjType", slot_of(get_obj_type_)},           {"GetStcType", slot_of(get_stc_type_)},
        {"Dispose", slot_of(dispose_)},
    };
    for (const Binding& binding : bindings) {
        if (!bind_managed_method(host, assembly, ObjectHostTypeName, binding.method, binding.slot, &error_)) {
            not_valid_ = true;
            return;
        }
    }
}
