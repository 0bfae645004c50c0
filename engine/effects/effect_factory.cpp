#include "engine/effects/echo.h"
#include "engine/effects/modulated_delay.h"
#include "engine/effects/parametric_eq.h"
#include "engine/effects/reverb.h"

namespace melvane::engine {

std::unique_ptr<Effect> makeEffect(EffectType type) {
    switch (type) {
        case EffectType::chorus:
            return std::make_unique<Chorus>();
        case EffectType::echo:
            return std::make_unique<Echo>();
        case EffectType::flanger:
            return std::make_unique<Flanger>();
        case EffectType::parametricEq:
            return std::make_unique<ParametricEq>();
        case EffectType::reverb:
            return std::make_unique<Reverb>();
    }
    return nullptr;
}

}  // namespace melvane::engine
