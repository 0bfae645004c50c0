// The program's settings as text values of the per-user registry.
//
// Nothing here fails or throws: what cannot be read is "", what cannot be written is not, which failure() tells.
// Numbers are read by their leading digits, 0 when there are none, and rounded. A number beyond the range of its field
// (a store edited by hand) and a field missing from a list leave that field as it was.
#pragma once

#include <string>
#include <vector>

#include "platform/registry.h"
#include "state/settings.h"

namespace melvane {

inline constexpr const char* kProductKey = R"(software\Tessaro\Melvane)";
// Of the sibling product, and only read: its recording directory is shared.
inline constexpr const char* kSiblingKey = R"(software\Tessaro\Quillon)";

class SettingsStore {
public:
    // `registry` must outlive this object.
    explicit SettingsStore(Registry& registry) : registry_(registry) {}

    // Text of a value of the current user; "" when there is none.
    std::string ReadSetting(const std::string& subKey, const std::string& valueName) const;
    void WriteSetting(const std::string& subKey, const std::string& valueName, const std::string& text) const;

    // What is read and written while the batch lives costs one access.
    RegistryBatch batch(RegistryAccess access) const { return RegistryBatch(registry_, access); }

    // Takes every value that is stored and not empty. EffectSwitch::parameter is left alone.
    void load(Settings& settings) const;
    // Writes every value but recDirectory, and the position only when there is one.
    void save(const Settings& settings) const;
    // The same values as they are written, in one order.
    static std::vector<std::string> texts(const Settings& settings);
    // Writes those of `texts` that are others in `before`.
    void saveChanges(const std::vector<std::string>& texts, const std::vector<std::string>& before) const;
    // Why something that was written last did not get there; ERROR_SUCCESS when all did.
    std::int32_t failure() const { return registry_.failure(); }

private:
    std::string readValue(RegistryHive hive, const std::string& subKey, const std::string& valueName) const;
    void writeValue(RegistryHive hive, const std::string& subKey, const std::string& valueName,
                    const std::string& text) const;
    // REG_SZ up to its first zero, REG_BINARY as the 16-bit integer that its first bytes make; else "".
    std::string queryValue(RegistryKey key, const std::string& valueName) const;

    Registry& registry_;
};

}  // namespace melvane
