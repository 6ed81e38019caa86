// The names of the library's .def file (ZENK_DEF_PATH) on lines that match
// `pattern`, the name as its first group, in the file's order.
#pragma once

#include <fstream>
#include <regex>
#include <string>
#include <vector>

inline std::vector<std::string> DefNames(const char* pattern) {
    std::ifstream def(ZENK_DEF_PATH);
    const std::regex line_pattern(pattern);
    std::vector<std::string> names;
    std::smatch m;
    for (std::string line; std::getline(def, line);)
        if (std::regex_match(line, m, line_pattern)) names.push_back(m[1]);
    return names;
}
