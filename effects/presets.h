// The fourteen equaliser presets and the bands that they set.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace melvane {

inline constexpr std::string_view kBandCentres = "80,170,310,600,1000,3000,6000,12000,14000,16000";  // Hz

struct Preset {
    std::string_view name;   // the same in both languages
    std::string_view gains;  // dB, one a band
};

inline constexpr std::array<Preset, 14> kPresets = {{
    {"Normal", "0,0,0,0,0,0,0,0,0,0"},
    {"Classical", "0,0,0,0,0,0,-2,-2,-2,-2"},
    {"Club", "0,0,1,2,2,2,1,0,0,0"},
    {"Dance", "5,3,1,0,0,-2,-3,-2,1,1"},
    {"Hall", "6,4,1,1,0,-3,-3,-3,0,0"},
    {"Live", "-3,0,1,2,2,2,1,1,1,1"},
    {"Party", "3,3,0,0,0,0,0,0,2,2"},
    {"Pop", "-1,2,3,3,2,0,-1,-1,-1,-1"},
    {"Reggae", "0,0,0,-2,0,2,2,0,0,0"},
    {"Rock", "3,2,-2,-3,-1,1,2,3,3,3"},
    {"Ska", "-1,-2,-1,0,1,2,3,3,3,3"},
    {"Soft", "2,0,0,-1,-2,-1,1,2,3,3"},
    {"Soft Rock", "2,2,0,-1,-2,-3,-2,0,1,3"},
    {"Techno!", "3,2,0,-3,-2,0,2,3,3,2"},
}};

}  // namespace melvane
