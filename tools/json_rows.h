// JSON output of the zepsc tool (nlohmann-json): an array of records, one
// record a line, written as it is produced so a long input never has to be
// held whole:
//   [
//     {"frame": 0, "index": [120, 330], ...},
//     ...
//   ]
#pragma once

#include <nlohmann/json.hpp>

#include <cstdio>
#include <string>

namespace zepsc_cli {

/// One JSON value on one line, with a space after each ':' and ','.
std::string json_line(const nlohmann::ordered_json& value);

class JsonRows {
public:
    explicit JsonRows(std::FILE* out) : out_(out) {}
    void add(const nlohmann::ordered_json& row);
    /// Ends the array ("[]" when no row came).
    void close();

private:
    std::FILE* out_;
    bool any_ = false;
};

}  // namespace zepsc_cli
