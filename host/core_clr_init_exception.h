// The report of a runtime that refused to create its default application domain.
#pragma once

#include <exception>
#include <string>

class CoreClrInitException : public std::exception {
public:
    CoreClrInitException(int status, const char* exe_path, const char* domain_name, int property_count,
                         const char* const* keys, const char* const* values);
    const char* what() const noexcept override { return message_.c_str(); }

private:
    std::string message_;
};
