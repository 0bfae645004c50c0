// Who asks the disk about what lies in a folder. Belongs into one source file of a test: it takes the place of the
// system's functions.
#pragma once

#include <dlfcn.h>
#include <sys/stat.h>

#include <atomic>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

namespace melvane::test {

// While one lives.
class DiskQuestions {
public:
    explicit DiskQuestions(std::string folder) : folder_(std::move(folder)) { current() = this; }
    ~DiskQuestions() { current() = nullptr; }
    DiskQuestions(const DiskQuestions&) = delete;
    DiskQuestions& operator=(const DiskQuestions&) = delete;

    // What was asked about on the thread that this was made on, a line each.
    const std::string& here() const { return here_; }
    int elsewhere() const { return elsewhere_; }

    static void note(std::string_view path) {
        DiskQuestions* const one = current();
        if (!one || !path.starts_with(one->folder_)) return;
        if (std::this_thread::get_id() == one->thread_)
            one->here_.append(path) += '\n';
        else
            ++one->elsewhere_;
    }

private:
    static std::atomic<DiskQuestions*>& current() {
        static std::atomic<DiskQuestions*> one = nullptr;
        return one;
    }

    const std::string folder_;
    const std::thread::id thread_ = std::this_thread::get_id();
    std::string here_;
    std::atomic<int> elsewhere_ = 0;
};

template <typename Function>
Function* systems(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace melvane::test

#pragma GCC visibility push(default)
extern "C" {

int stat(const char* path, struct stat* found) noexcept {
    melvane::test::DiskQuestions::note(path);
    static auto* const real = melvane::test::systems<int(const char*, struct stat*)>("stat");
    return real(path, found);
}

int lstat(const char* path, struct stat* found) noexcept {
    melvane::test::DiskQuestions::note(path);
    static auto* const real = melvane::test::systems<int(const char*, struct stat*)>("lstat");
    return real(path, found);
}

}  // extern "C"
#pragma GCC visibility pop
