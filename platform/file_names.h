// The platform's well-known directories and file-name forms. Paths are UTF-8.
#pragma once

#include <string>

namespace melvane {

class FileNames {
public:
    virtual ~FileNames() = default;

    // Where shared libraries of the system are looked for.
    virtual std::string systemDirectory() const = 0;
    // Where the running program's file lies.
    virtual std::string programDirectory() const = 0;
    // The address (file://) of a page of the program's documents, such as "help.en.html". Whether the page is there
    // shows when it is opened.
    virtual std::string pageAddress(const std::string& page) const = 0;
    // Where a song that was cut out of a karaoke file is put: "tmp.mid" in a folder that this process alone can use and
    // that goes with it. The same for the life of the program. Empty when there is no place for it.
    virtual std::string temporaryMidiFile() const = 0;
    // Where the user keeps what can be made again, of this program alone; it need not be there yet. "" for nowhere.
    virtual std::string cacheDirectory() const = 0;
    // The short (8.3) form of an existing file's path; where there are no short names, its absolute form.
    virtual std::string shortPath(const std::string& path) const = 0;
    // The path as one word of an encoder command line: as it stands where it holds neither white space nor
    // double quotes nor backslashes; else in double quotes, with a backslash before each quote and backslash.
    virtual std::string commandLineWord(const std::string& path) const = 0;
};

}  // namespace melvane
