// Gives a door the files of a folder, whole and cut short, where no fuzzer runs.
#include <cstdio>
#include <vector>

#include "tests/fuzz/door.h"
#include "tests/temp_dir.h"

int main(int, char** argv) {
    constexpr std::ptrdiff_t kParts = 16;
    bool any = false;
    for (const auto& entry : std::filesystem::directory_iterator(argv[1])) {
        std::fprintf(stderr, "%s\n", entry.path().c_str());
        const std::string whole = melvane::test::readFile(entry.path().string());
        for (std::ptrdiff_t part = 0; part <= kParts; ++part) {
            // Nothing stands behind these bytes, not even a zero.
            const auto end = whole.begin() + std::ssize(whole) * part / kParts;
            const std::vector<char> bytes(whole.begin(), end);
            melvane::fuzz::attack({bytes.data(), bytes.size()});
        }
        any = true;
    }
    return any ? 0 : 1;
}
