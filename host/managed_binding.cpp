#include "host/managed_binding.h"

#include "host/host_environment.h"

std::string missing_method_error_message(const char* type, const char* assembly, const char* method,
                                         int32_t status) {
    std::string text = "While initializing the host for the '";
    text.append(type).append(" (Assembly=").append(assembly).append(")' type, an error occurred - Method '");
    text.append(method).append("' not found (error=").append(std::to_string(status)).append(")");
    return text;
}

bool bind_managed_method(const HostEnvironment* host, const char* assembly, const char* type,
                         const char* method, void** slot, std::string* error) {
    // A host that never started answers like a method that cannot be found.
    int32_t status = host != nullptr ? host->try_create_delegate(assembly, type, method, slot)
                                     : static_cast<int32_t>(0x8000FFFF);
    if (status == 0)
        return true;
    *slot = nullptr;
    *error = missing_method_error_message(type, assembly, method, status);
    return false;
}
