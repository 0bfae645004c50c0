// The progress of a mix on the program's entry in the taskbar or dock, where the desktop shows one.
#pragma once

namespace melvane {

class TaskbarProgress {
public:
    // 0..1; -1: none. The same as before costs nothing.
    void showProgress(double done);

private:
    int shown_ = -1;  // percent
};

}  // namespace melvane
