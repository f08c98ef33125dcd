// Start-up progress lines (only when COREHOST_TRACE >= 1) and error lines (always).
// Every line ends with "\r\n", written after the text.
#pragma once

namespace trace {

void initialize();
void enable();
void disable();
bool is_enabled();

void info(const char* format, ...) __attribute__((format(printf, 1, 2)));
void verbose(const char* format, ...) __attribute__((format(printf, 1, 2)));
void warning(const char* format, ...) __attribute__((format(printf, 1, 2)));
void error(const char* format, ...) __attribute__((format(printf, 1, 2)));

}  // namespace trace
