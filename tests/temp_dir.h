// A directory of a test's own, with a name that is hard on paths; gone with the test.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace melvane::test {

class TempDir {
public:
    TempDir() {
        std::string name = (std::filesystem::temp_directory_path() / "melvane zażółć 'q' XXXXXX").string();
        path_ = mkdtemp(name.data());
    }
    ~TempDir() {
        std::error_code error;
        std::filesystem::remove_all(path_, error);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    std::string operator/(const std::string& name) const { return path_ + "/" + name; }
    const std::string& path() const { return path_; }

    std::string write(const std::string& name, const std::string& bytes, bool executable = false) const {
        const std::string file = *this / name;
        std::ofstream(file, std::ios::binary) << bytes;
        if (executable) std::filesystem::permissions(file, std::filesystem::perms::owner_all);
        return file;
    }

private:
    std::string path_;
};

inline std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace melvane::test
