#include "tests/vec_reader.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace zeps::test {

std::string shared_dir() {
    const char* env = std::getenv("ZEPS_SHARED_DIR");
    return env && *env ? env : ZEPS_SHARED_DIR;
}

std::string shared_path(const std::string& rel) { return shared_dir() + "/" + rel; }

std::optional<std::string> shared_data_missing(const std::string& rel) {
    std::error_code ec;
    if (std::filesystem::exists(shared_path(rel), ec)) return std::nullopt;
    std::string why = "shared data not found: " + shared_path(rel) +
                      " (the tests read reference vectors and speech from the folder named by ZEPS_SHARED_DIR, "
                      "default " ZEPS_SHARED_DIR ")";
    const char* required = std::getenv("ZEPS_REQUIRE_SHARED_DATA");
    if (required && *required && std::string(required) != "0") ADD_FAILURE() << why << "; ZEPS_REQUIRE_SHARED_DATA is set";
    return why;
}

const VecArg* VecCase::input(const std::string& name) const {
    for (const VecArg& a : args)
        if (a.name == name && (a.dir == "in" || a.dir == "io")) return &a;
    return nullptr;
}

const VecArg* VecCase::output(const std::string& name) const {
    for (auto it = args.rbegin(); it != args.rend(); ++it)
        if (it->name == name && (it->dir == "out" || it->dir == "io")) return &*it;
    return nullptr;
}

namespace {
const VecArg& must(const VecArg* a, const std::string& name, int number) {
    if (a == nullptr) throw std::runtime_error("case " + std::to_string(number) + " has no argument " + name);
    return *a;
}
}  // namespace

const VecArg& VecCase::in(const std::string& name) const { return must(input(name), name, number); }
const VecArg& VecCase::out(const std::string& name) const { return must(output(name), name, number); }

bool VecCase::has_comment(const std::string& text) const {
    for (const std::string& c : comments)
        if (c.find(text) != std::string::npos) return true;
    return false;
}

VecFile load_vec(const std::string& path) {
    std::ifstream f(path);
    if (!f) throw std::runtime_error("cannot open " + path);
    VecFile file;
    VecCase* cur = nullptr;
    bool pending_unchanged = false;
    std::string line;
    int lineno = 0;
    while (std::getline(f, line)) {
        ++lineno;
        if (line.empty()) continue;
        if (line[0] == '#') {
            std::string text = line.substr(1);
            if (!text.empty() && text[0] == ' ') text.erase(0, 1);
            if (cur == nullptr) {
                if (text.rfind("stream", 0) == 0) file.stream = true;
                file.header.push_back(text);
            } else {
                if (text.rfind("unchanged", 0) == 0) pending_unchanged = true;
                cur->comments.push_back(text);
            }
            continue;
        }
        std::istringstream in(line);
        std::string word;
        in >> word;
        if (word == "@") {
            std::string kind;
            in >> kind;
            file.cases.emplace_back();
            cur = &file.cases.back();
            cur->reset = (kind == "reset");
            if (kind == "case") in >> cur->number;
            pending_unchanged = false;
        } else if (word == "ret") {
            if (cur == nullptr) throw std::runtime_error(path + ":" + std::to_string(lineno) + ": ret outside a case");
            in >> cur->ret;
            cur->has_ret = true;
        } else if (word == "in" || word == "out" || word == "io") {
            if (cur == nullptr) throw std::runtime_error(path + ":" + std::to_string(lineno) + ": argument outside a case");
            VecArg a;
            a.dir = word;
            std::size_t count = 0;
            std::string colon;
            in >> a.name >> a.type >> count >> colon;
            if (colon != ":") throw std::runtime_error(path + ":" + std::to_string(lineno) + ": malformed argument");
            a.unchanged = pending_unchanged;
            pending_unchanged = false;
            if (a.type == "f32") {
                a.floats.reserve(count);
                float v;
                while (a.floats.size() < count && in >> v) a.floats.push_back(v);
            } else {
                a.ints.reserve(count);
                std::int64_t v;
                while (a.ints.size() < count && in >> v) a.ints.push_back(v);
            }
            if (a.size() != count)
                throw std::runtime_error(path + ":" + std::to_string(lineno) + ": expected " + std::to_string(count) +
                                         " values for " + a.name);
            cur->args.push_back(std::move(a));
        } else {
            throw std::runtime_error(path + ":" + std::to_string(lineno) + ": unknown line");
        }
    }
    return file;
}

std::vector<std::int16_t> load_speech(const std::string& name) {
    std::ifstream f(shared_path("speech/" + name), std::ios::binary);
    if (!f) throw std::runtime_error("cannot open speech file " + name);
    std::vector<char> bytes((std::istreambuf_iterator<char>(f)), std::istreambuf_iterator<char>());
    std::vector<std::int16_t> s(bytes.size() / 2);
    for (std::size_t i = 0; i < s.size(); ++i)
        s[i] = static_cast<std::int16_t>(static_cast<unsigned char>(bytes[2 * i]) |
                                         (static_cast<unsigned char>(bytes[2 * i + 1]) << 8));
    return s;
}

}  // namespace zeps::test
