// Binding one static managed method of the interop assembly to a native slot.
#pragma once

#include <cstdint>
#include <string>

class HostEnvironment;

// The address of a typed function-pointer slot, as the untyped out-pointer binding fills.
template <typename Fn>
inline void** slot_of(Fn*& fn) {
    return reinterpret_cast<void**>(&fn);
}

// "While initializing the host for the '<type> (Assembly=<assembly>)' type, an error occurred - Method '<method>' not found (error=<status>)"
std::string missing_method_error_message(const char* type, const char* assembly, const char* method,
                                         int32_t status);

// True when *slot holds the entry point; otherwise *error receives the missing-method text.
bool bind_managed_method(const HostEnvironment* host, const char* assembly, const char* type,
                         const char* method, void** slot, std::string* error);
