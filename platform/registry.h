// The registry operations that the settings store needs, with the names, arguments and results of the
// Windows registry functions, so that an adapter over the real registry only passes them on.
// Called on the user-interface thread; no operation throws. An operation outside a batch is a batch of its own.
#pragma once

#include <cstdint>
#include <string>

namespace melvane {

using RegistryKey = std::uintptr_t;  // 0: none
enum class RegistryHive { HKEY_CURRENT_USER };

inline constexpr std::uint32_t REG_SZ = 1;
inline constexpr std::uint32_t REG_BINARY = 3;

inline constexpr std::int32_t ERROR_SUCCESS = 0;
inline constexpr std::int32_t ERROR_FILE_NOT_FOUND = 2;
inline constexpr std::int32_t ERROR_WRITE_FAULT = 29;
inline constexpr std::int32_t ERROR_DISK_FULL = 112;
inline constexpr std::int32_t ERROR_MORE_DATA = 234;

enum class RegistryAccess { read, change };

class Registry {
public:
    virtual ~Registry() = default;

    // What is done from begin() to end() is one batch: it reads one state of the registry, and what it writes gets
    // there at once, by end(). While a batch changes, no other program does, so what it read still holds when it
    // writes. Batches in a batch are part of it.
    virtual void begin(RegistryAccess access) = 0;
    // ERROR_DISK_FULL or ERROR_WRITE_FAULT when what was written did not get there.
    virtual std::int32_t end() = 0;
    // The same of the last batch that changed something, also when only one of its values could not be written.
    virtual std::int32_t failure() const = 0;

    virtual std::int32_t RegOpenKeyA(RegistryHive hive, const std::string& subKey, RegistryKey& key) = 0;
    virtual std::int32_t RegCreateKeyA(RegistryHive hive, const std::string& subKey, RegistryKey& key) = 0;
    // Writes `size` bytes as they stand; a text needs no terminating zero.
    virtual std::int32_t RegSetValueExA(RegistryKey key, const std::string& name, std::uint32_t reserved,
                                        std::uint32_t type, const void* data, std::uint32_t size) = 0;
    // With `data` null: tells type and size. Else `size` is the room on entry and the bytes written on
    // return; ERROR_MORE_DATA when the room is too small.
    virtual std::int32_t RegQueryValueExA(RegistryKey key, const std::string& name, std::uint32_t& type, void* data,
                                          std::uint32_t& size) = 0;
    virtual std::int32_t RegCloseKey(RegistryKey key) = 0;
};

// A batch for as long as it lives.
class RegistryBatch {
public:
    RegistryBatch(Registry& registry, RegistryAccess access) : registry_(registry) { registry_.begin(access); }
    ~RegistryBatch() { registry_.end(); }
    RegistryBatch(const RegistryBatch&) = delete;
    RegistryBatch& operator=(const RegistryBatch&) = delete;

private:
    Registry& registry_;
};

}  // namespace melvane
