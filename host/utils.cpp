#include "host/utils.h"

std::string cxxaw_substr(const std::string& text, std::string::size_type position,
                         std::string::size_type length) {
    if (position >= text.size())
        return std::string();
    return text.substr(position, length);
}

bool cxxaw_isdigitstr(const std::string& text) {
    if (text.empty())
        return false;
    for (char c : text)
        if (c < '0' || c > '9')
            return false;
    return true;
}
