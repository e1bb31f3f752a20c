#include "tools/json_rows.h"

namespace zepsc_cli {

std::string json_line(const nlohmann::ordered_json& v) {
    std::string s;
    if (v.is_object()) {
        s = "{";
        for (auto it = v.begin(); it != v.end(); ++it)
            s += (it == v.begin() ? "" : ", ") + nlohmann::ordered_json(it.key()).dump() + ": " + json_line(it.value());
        return s + "}";
    }
    if (v.is_array()) {
        s = "[";
        for (std::size_t i = 0; i < v.size(); ++i) s += (i ? ", " : "") + json_line(v[i]);
        return s + "]";
    }
    return v.dump();
}

void JsonRows::add(const nlohmann::ordered_json& row) {
    std::fprintf(out_, "%s  %s", any_ ? ",\n" : "[\n", json_line(row).c_str());
    any_ = true;
}

void JsonRows::close() { std::fprintf(out_, any_ ? "\n]\n" : "[\n]\n"); }

}  // namespace zepsc_cli
