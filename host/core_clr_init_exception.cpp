#include "host/core_clr_init_exception.h"

#include <cstdint>
#include <sstream>

CoreClrInitException::CoreClrInitException(int status, const char* exe_path, const char* domain_name,
                                           int property_count, const char* const* keys,
                                           const char* const* values) {
    std::ostringstream text;
    text << "coreclr_initialize failed (0x" << std::hex << static_cast<uint32_t>(status) << std::dec << ")";
    text << " [<APP_DOMAIN_NAME>='" << domain_name << "',<HOST_EXE_PATH>='" << exe_path << "'";
    for (int i = 0; i < property_count; ++i)
        text << ",<" << keys[i] << ">='" << values[i] << "'";
    text << "]";
    message_ = text.str();
}
