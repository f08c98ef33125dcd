#include "host/trace.h"

#include <cstdarg>
#include <string>

#include "host/pal.h"

namespace {
bool g_enabled = false;
}

namespace trace {

void initialize() {
    if (g_enabled)
        return;
    std::string value;
    if (pal::getenv("COREHOST_TRACE", &value) && pal::to_int(value.c_str()) >= 1) {
        g_enabled = true;
        info("CLR host tracing enabled");
    }
}

void enable() { g_enabled = true; }
void disable() { g_enabled = false; }
bool is_enabled() { return g_enabled; }

#define QRX_TRACE_TO(sink)             \
    do {                               \
        va_list args;                  \
        va_start(args, format);        \
        pal::sink(format, args);       \
        va_end(args);                  \
    } while (0)

void info(const char* format, ...) {
    if (g_enabled)
        QRX_TRACE_TO(out_vprintf);
}

void verbose(const char* format, ...) {
    if (g_enabled)
        QRX_TRACE_TO(out_vprintf);
}

void warning(const char* format, ...) {
    if (g_enabled)
        QRX_TRACE_TO(out_vprintf);
}

void error(const char* format, ...) { QRX_TRACE_TO(err_vprintf); }

}  // namespace trace
