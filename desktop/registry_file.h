// The registry as a JSON file: an object for each key, named by its path, with the values in it. A text (REG_SZ)
// that is plain UTF-8 is a JSON string; any other value is {"type": number, "base64": bytes}.
//
// A batch reads the file once, and replaces it once, in one step, when it changed something. Several programs may use
// one file: a batch that changes holds a lock file beside it from before it reads. Entries that are not understood are
// kept. A file that is no registry (broken, or larger than 4 MiB) holds nothing, and the next write moves it to
// "<name>.broken" first.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "platform/registry.h"

class QJsonObject;

namespace melvane {

class RegistryFile : public Registry {
public:
    // UTF-8 path; neither the file nor its directory need exist.
    explicit RegistryFile(std::string path);
    ~RegistryFile() override;

    // Tessaro/registry.json in the user's directory for configuration.
    static std::string defaultPath();

    // Key paths and value names are compared without regard to ASCII case. Results are ERROR_SUCCESS,
    // ERROR_FILE_NOT_FOUND for a key or value that is not there, ERROR_MORE_DATA as the interface says, and
    // ERROR_DISK_FULL or ERROR_WRITE_FAULT when the file cannot be replaced, the value makes it too large, or it stays
    // locked by another program for 2 s: a batch waits once. What can't be written leaves the file as it was.
    void begin(RegistryAccess access) override;
    std::int32_t end() override;
    std::int32_t failure() const override { return failure_; }
    std::int32_t RegOpenKeyA(RegistryHive hive, const std::string& subKey, RegistryKey& key) override;
    std::int32_t RegCreateKeyA(RegistryHive hive, const std::string& subKey, RegistryKey& key) override;
    std::int32_t RegSetValueExA(RegistryKey key, const std::string& name, std::uint32_t reserved, std::uint32_t type,
                                const void* data, std::uint32_t size) override;
    std::int32_t RegQueryValueExA(RegistryKey key, const std::string& name, std::uint32_t& type, void* data,
                                  std::uint32_t& size) override;
    std::int32_t RegCloseKey(RegistryKey key) override;

private:
    struct Batch;

    std::int32_t replace(const Batch& batch) const;
    // Lets `change` change the keys of the batch.
    std::int32_t change(const std::function<void(QJsonObject&)>& change);
    std::int32_t open(const std::string& keyPath, RegistryKey& key);

    std::string path_;
    std::unique_ptr<Batch> batch_;  // while there is one
    std::int32_t failure_ = ERROR_SUCCESS;
    std::map<RegistryKey, std::string> openKeys_;
    RegistryKey lastKey_ = 0;
};

}  // namespace melvane
