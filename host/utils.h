// Small string helpers shared by the platform layer.
#pragma once

#include <string>

// Substring from position, at most length characters; npos means "to the end".
std::string cxxaw_substr(const std::string& text, std::string::size_type position,
                         std::string::size_type length = std::string::npos);
// True when text is non-empty and every character is '0'..'9'.
bool cxxaw_isdigitstr(const std::string& text);
