// Where finished mixes go. What stands at a destination stays as it is until a whole new file takes its place, and what
// a run had mixed when its program was killed is found again. Paths are UTF-8. Used on any thread, one call at a time.
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace melvane {

// One run's hold on one file, which no other run gets meanwhile, in this program or in another. Ends with the object:
// what wasn't put in place is removed, and so is the placeholder where there had been no file.
class Destination {
public:
    virtual ~Destination() = default;

    // Where the new file is to be written: beside the destination, there and empty.
    virtual const std::string& privateFile() const = 0;
    // What stands there, or the placeholder; without links on the way.
    virtual const std::string& file() const = 0;
    // Puts these bytes in front of what was written into the private file, which is changed as a whole or not at all.
    // 0, or the error number (<cerrno>) of what kept it from that. Waits for the disk.
    virtual int prepend(const std::string& bytes) = 0;
    // Puts the private file, safe on the disk and with the mode of what stood there, in the destination's place. 0, or
    // the error number (<cerrno>) of what kept it from that; what stood there is still there then. Waits for the disk.
    virtual int replace() = 0;
    // Leaves what stands there, and puts the private file beside it as the first of "name (part).mp3", "name (part
    // 2).mp3" and so on that is free. Its path; "" when that can't be done: then it stays for interrupted().
    virtual std::string putBeside() = 0;
    // Leaves the private file where it is, for interrupted().
    virtual void leave() = 0;
};

enum class ClaimFailure {
    none,
    notWritable,  // no place for a file, not one that may be written, or a link that leads nowhere
    exists,       // and may not be replaced
    busy,         // another run writes it
};

struct DestinationClaim {
    std::unique_ptr<Destination> destination;  // null on failure
    ClaimFailure failure = ClaimFailure::none;
    int cause = 0;  // error number (<cerrno>) behind notWritable; 0: none is known
};

class Destinations {
public:
    virtual ~Destinations() = default;

    // Holds `path`, or the file that it leads to. Where there is none, one with an empty line is created as a
    // placeholder; of several that try at once one gets it.
    virtual DestinationClaim claim(const std::string& path, bool mayReplace) = 0;
    // What runs left whose programs ended without a word, each for the first who asks.
    virtual std::vector<std::unique_ptr<Destination>> interrupted() = 0;
};

}  // namespace melvane
