// Writes what is installed about the command lines of both programs: manual_main FOLDER DATE
#include <cstdio>
#include <fstream>
#include <string>

#include "app/program_help.h"
#include "tools/manual.h"
#include "tools/options.h"

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    const std::string folder = std::string(argv[1]) + "/";
    for (const melvane::CommandHelp& help : {melvane::programHelp(), melvane::toolHelp()}) {
        const std::string name(help.program);
        std::ofstream page(folder + name + ".1");
        std::ofstream completion(folder + name);
        page << melvane::manualPage(help, argv[2]);
        completion << melvane::bashCompletion(help);
        if (!page.flush() || !completion.flush()) {
            std::fprintf(stderr, "%s can't be written.\n", name.c_str());
            return 1;
        }
    }
    return 0;
}
